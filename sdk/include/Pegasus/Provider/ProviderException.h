#ifndef Pegasus_ProviderException_h
#define Pegasus_ProviderException_h

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

// The exceptions that providers throw for the common failure codes. They
// belong to the provider interface, not to the common object model, so a
// provider that names one must include this header.
class PEGASUS_PROVIDER_LINKAGE CIMOperationFailedException : public CIMException
{
public:
    CIMOperationFailedException(const String& message);

protected:
    // For the more specific failures below, which are operation failures too.
    CIMOperationFailedException(const CIMStatusCode code, const String& message);
};

class PEGASUS_PROVIDER_LINKAGE CIMAccessDeniedException : public CIMOperationFailedException
{
public:
    CIMAccessDeniedException(const String& message);
};

class PEGASUS_PROVIDER_LINKAGE CIMInvalidParameterException : public CIMOperationFailedException
{
public:
    CIMInvalidParameterException(const String& message);
};

class PEGASUS_PROVIDER_LINKAGE CIMObjectNotFoundException : public CIMOperationFailedException
{
public:
    CIMObjectNotFoundException(const String& message);
};

class PEGASUS_PROVIDER_LINKAGE CIMNotSupportedException : public CIMOperationFailedException
{
public:
    CIMNotSupportedException(const String& message);
};

PEGASUS_NAMESPACE_END

#endif
