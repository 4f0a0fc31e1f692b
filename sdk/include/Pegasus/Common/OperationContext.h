#ifndef Pegasus_OperationContext_h
#define Pegasus_OperationContext_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class OperationContextRep;

// The facts that travel with a request (who asks, timeouts, ...), one container
// per kind, each kind known by its unique name. Copies are independent.
class PEGASUS_COMMON_LINKAGE OperationContext
{
public:
    class PEGASUS_COMMON_LINKAGE Container
    {
    public:
        virtual ~Container();
        virtual String getName() const = 0;
        // The caller owns the copy and releases it with destroy().
        virtual Container* clone() const = 0;
        virtual void destroy() = 0;
    };

    OperationContext();
    OperationContext(const OperationContext& context);
    virtual ~OperationContext();
    OperationContext& operator=(const OperationContext& context);

    void clear();
    // Throws Exception when no container of that name is held.
    const Container& get(const String& containerName) const;
    Boolean contains(const String& containerName) const;
    // Replaces the container of the same name; throws Exception when there is none.
    void set(const Container& container);
    // Throws AlreadyExistsException when a container of the same name is held.
    void insert(const Container& container);
    // Throws Exception when no container of that name is held.
    void remove(const String& containerName);

protected:
    OperationContextRep* _rep;
};

// The user on whose behalf the operation runs; "" stands for the server itself.
class PEGASUS_COMMON_LINKAGE IdentityContainer : virtual public OperationContext::Container
{
public:
    static const String NAME;

    // Throws DynamicCastFailedException when container is not an IdentityContainer.
    IdentityContainer(const OperationContext::Container& container);
    IdentityContainer(const IdentityContainer& container);
    IdentityContainer(const String& userName);
    virtual ~IdentityContainer();
    IdentityContainer& operator=(const IdentityContainer& container);

    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();

    String getUserName() const;

private:
    IdentityContainer();

    String _userName;
};

// How long the requester is willing to wait, in milliseconds.
class PEGASUS_COMMON_LINKAGE TimeoutContainer : virtual public OperationContext::Container
{
public:
    static const String NAME;

    TimeoutContainer(const OperationContext::Container& container);
    TimeoutContainer(Uint32 timeout);
    TimeoutContainer(const TimeoutContainer& container);
    virtual ~TimeoutContainer();
    TimeoutContainer& operator=(const TimeoutContainer& container);

    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();

    Uint32 getTimeOut() const;

private:
    TimeoutContainer();

    Uint32 _value;
};

PEGASUS_NAMESPACE_END

#endif
