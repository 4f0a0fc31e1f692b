#ifndef ORV_ClientAddressContainer_h
#define ORV_ClientAddressContainer_h

// The network address of the client that sent a request. The HTTP host of this
// product puts it into each request's context; a stock CIM server does not, and
// then ORV_getClientAddress() answers "". Built only on the public container API
// so that the module compiles against any conforming server SDK.

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>

PEGASUS_USING_PEGASUS;

class ORV_ClientAddressContainer : virtual public OperationContext::Container
{
public:
    // Unique among container names; chosen so it cannot clash with the server's own.
    static constexpr const char* NAME = "ORV_ClientAddressContainer";

    explicit ORV_ClientAddressContainer(const String& address) : _address(address)
    {
    }

    // Throws DynamicCastFailedException when container holds no client address.
    ORV_ClientAddressContainer(const OperationContext::Container& container)
    {
        const ORV_ClientAddressContainer* p =
            dynamic_cast<const ORV_ClientAddressContainer*>(&container);
        if (p == 0)
        {
            throw DynamicCastFailedException();
        }
        _address = p->_address;
    }

    ORV_ClientAddressContainer(const ORV_ClientAddressContainer& container)
        : OperationContext::Container(), _address(container._address)
    {
    }

    virtual ~ORV_ClientAddressContainer()
    {
    }

    ORV_ClientAddressContainer& operator=(const ORV_ClientAddressContainer& container)
    {
        _address = container._address;
        return *this;
    }

    virtual String getName() const
    {
        return String(NAME);
    }

    virtual OperationContext::Container* clone() const
    {
        return new ORV_ClientAddressContainer(*this);
    }

    virtual void destroy()
    {
        delete this;
    }

    String getAddress() const
    {
        return _address;
    }

private:
    String _address;
};

// The caller's address, or "" when the server did not record one.
inline String ORV_getClientAddress(const OperationContext& context)
{
    const String name(ORV_ClientAddressContainer::NAME);
    if (!context.contains(name))
    {
        return String();
    }
    const ORV_ClientAddressContainer* p =
        dynamic_cast<const ORV_ClientAddressContainer*>(&context.get(name));
    return p != 0 ? p->getAddress() : String();
}

#endif
