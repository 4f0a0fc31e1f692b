#ifndef Pegasus_CIMClientException_h
#define Pegasus_CIMClientException_h

#include <Pegasus/Client/Linkage.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// The server answered with an HTTP error instead of a CIM response (401 for
// refused credentials, 400 with a CIMError header for a refused request).
class PEGASUS_CLIENT_LINKAGE CIMClientHTTPErrorException : public Exception
{
public:
    CIMClientHTTPErrorException(Uint32 httpStatusCode, const String& reasonPhrase,
                                const String& cimError, const String& cimErrorDetail);
    CIMClientHTTPErrorException(const CIMClientHTTPErrorException& e);
    ~CIMClientHTTPErrorException();

    Uint32 getCode() const;
    String getReasonPhrase() const;
    String getCIMError() const;
    String getCIMErrorDetail() const;

private:
    Uint32 _code;
    String _reasonPhrase;
    String _cimError;
    String _cimErrorDetail;
};

// The response is not a CIM-XML message this client can read.
class PEGASUS_CLIENT_LINKAGE CIMClientXmlException : public Exception
{
public:
    CIMClientXmlException(const String& message);
};

// The response is well formed but does not answer the request.
class PEGASUS_CLIENT_LINKAGE CIMClientResponseException : public Exception
{
public:
    CIMClientResponseException(const String& message);
};

PEGASUS_NAMESPACE_END

#endif
