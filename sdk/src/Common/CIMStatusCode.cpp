#include <Pegasus/Common/CIMStatusCode.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

struct StatusText
{
    CIMStatusCode code;
    const char* text;
};

const StatusText _statusTexts[] = {
    {CIM_ERR_SUCCESS, "CIM_ERR_SUCCESS: successful"},
    {CIM_ERR_FAILED,
     "CIM_ERR_FAILED: A general error occurred that is not covered by a more specific error "
     "code"},
    {CIM_ERR_ACCESS_DENIED,
     "CIM_ERR_ACCESS_DENIED: Access to a CIM resource was not available to the client"},
    {CIM_ERR_INVALID_NAMESPACE, "CIM_ERR_INVALID_NAMESPACE: The target namespace does not exist"},
    {CIM_ERR_INVALID_PARAMETER,
     "CIM_ERR_INVALID_PARAMETER: One or more parameter values passed to the method were "
     "invalid"},
    {CIM_ERR_INVALID_CLASS, "CIM_ERR_INVALID_CLASS: The specified class does not exist"},
    {CIM_ERR_NOT_FOUND, "CIM_ERR_NOT_FOUND: The requested object could not be found"},
    {CIM_ERR_NOT_SUPPORTED, "CIM_ERR_NOT_SUPPORTED: The requested operation is not supported"},
    {CIM_ERR_CLASS_HAS_CHILDREN,
     "CIM_ERR_CLASS_HAS_CHILDREN: Operation cannot be carried out on this class since it has "
     "subclasses"},
    {CIM_ERR_CLASS_HAS_INSTANCES,
     "CIM_ERR_CLASS_HAS_INSTANCES: Operation cannot be carried out on this class since it "
     "has instances"},
    {CIM_ERR_INVALID_SUPERCLASS,
     "CIM_ERR_INVALID_SUPERCLASS: Operation cannot be carried out since the specified "
     "superclass does not exist"},
    {CIM_ERR_ALREADY_EXISTS,
     "CIM_ERR_ALREADY_EXISTS: Operation cannot be carried out because an object already "
     "exists"},
    {CIM_ERR_NO_SUCH_PROPERTY, "CIM_ERR_NO_SUCH_PROPERTY: The specified property does not exist"},
    {CIM_ERR_TYPE_MISMATCH,
     "CIM_ERR_TYPE_MISMATCH: The value supplied is incompatible with the type"},
    {CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED,
     "CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED: The query language is not recognized or "
     "supported"},
    {CIM_ERR_INVALID_QUERY,
     "CIM_ERR_INVALID_QUERY: The query is not valid for the specified query language"},
    {CIM_ERR_METHOD_NOT_AVAILABLE,
     "CIM_ERR_METHOD_NOT_AVAILABLE: The extrinsic method could not be executed"},
    {CIM_ERR_METHOD_NOT_FOUND,
     "CIM_ERR_METHOD_NOT_FOUND: The specified extrinsic method does not exist"},
    {CIM_ERR_NAMESPACE_NOT_EMPTY, "CIM_ERR_NAMESPACE_NOT_EMPTY: The namespace is not empty"},
    {CIM_ERR_INVALID_ENUMERATION_CONTEXT,
     "CIM_ERR_INVALID_ENUMERATION_CONTEXT: The enumeration context is invalid"},
    {CIM_ERR_INVALID_OPERATION_TIMEOUT,
     "CIM_ERR_INVALID_OPERATION_TIMEOUT: The operation timeout is not supported"},
    {CIM_ERR_PULL_HAS_BEEN_ABANDONED,
     "CIM_ERR_PULL_HAS_BEEN_ABANDONED: The pull operation has been abandoned"},
    {CIM_ERR_PULL_CANNOT_BE_ABANDONED,
     "CIM_ERR_PULL_CANNOT_BE_ABANDONED: The attempt to abandon a pull operation failed"},
    {CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED,
     "CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED: Filtered enumeration is not supported"},
    {CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED,
     "CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED: Continuation on error is not supported"},
    {CIM_ERR_SERVER_LIMITS_EXCEEDED,
     "CIM_ERR_SERVER_LIMITS_EXCEEDED: The server limits have been exceeded"},
    {CIM_ERR_SERVER_IS_SHUTTING_DOWN,
     "CIM_ERR_SERVER_IS_SHUTTING_DOWN: The server is shutting down"},
};

} // namespace

String cimStatusCodeToString(CIMStatusCode code)
{
    for (const StatusText& entry : _statusTexts)
    {
        if (entry.code == code)
        {
            return String(entry.text);
        }
    }
    return String("Unrecognized CIM status code");
}

PEGASUS_NAMESPACE_END
