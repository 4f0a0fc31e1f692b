#ifndef Pegasus_ResponseHandler_h
#define Pegasus_ResponseHandler_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>

PEGASUS_NAMESPACE_BEGIN

// Where a provider sends its results: processing() first, then any number of
// deliver() calls, then complete(); nothing may be delivered after complete().
class PEGASUS_COMMON_LINKAGE ResponseHandler
{
public:
    virtual ~ResponseHandler();

    virtual void processing() = 0;
    virtual void complete() = 0;

    // Context (for example content language) that applies to the whole response.
    void setContext(const OperationContext& context);

protected:
    ResponseHandler();
    ResponseHandler(const ResponseHandler& handler);
    ResponseHandler& operator=(const ResponseHandler& handler);

    OperationContext getContext() const;

private:
    OperationContext _context;
};

class PEGASUS_COMMON_LINKAGE InstanceResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliver(const CIMInstance& instance) = 0;
    virtual void deliver(const Array<CIMInstance>& instances) = 0;
};

class PEGASUS_COMMON_LINKAGE ObjectPathResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliver(const CIMObjectPath& objectPath) = 0;
    virtual void deliver(const Array<CIMObjectPath>& objectPaths) = 0;
};

class PEGASUS_COMMON_LINKAGE MethodResultResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliverParamValue(const CIMParamValue& outParamValue) = 0;
    virtual void deliverParamValue(const Array<CIMParamValue>& outParamValues) = 0;
    // The method's return value.
    virtual void deliver(const CIMValue& returnValue) = 0;
};

class PEGASUS_COMMON_LINKAGE ObjectResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliver(const CIMObject& object) = 0;
    virtual void deliver(const Array<CIMObject>& objects) = 0;
};

class PEGASUS_COMMON_LINKAGE ClassResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliver(const CIMClass& classObj) = 0;
    virtual void deliver(const Array<CIMClass>& classObjs) = 0;
};

class PEGASUS_COMMON_LINKAGE ValueResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliver(const CIMValue& value) = 0;
    virtual void deliver(const Array<CIMValue>& values) = 0;
};

PEGASUS_NAMESPACE_END

#endif
