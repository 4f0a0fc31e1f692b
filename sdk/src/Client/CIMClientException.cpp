#include <Pegasus/Client/CIMClientException.h>

#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

namespace
{
String _httpErrorText(Uint32 code, const String& reasonPhrase, const String& cimError,
                      const String& cimErrorDetail)
{
    char number[16];
    snprintf(number, sizeof(number), "%u", code);
    String text = String("HTTP Error (") + number + " " + reasonPhrase + ").";
    if (cimError.size() != 0)
    {
        text.append(String(" CIMError: ") + cimError + ".");
    }
    if (cimErrorDetail.size() != 0)
    {
        text.append(String(" Detail: ") + cimErrorDetail);
    }
    return text;
}
} // namespace

CIMClientHTTPErrorException::CIMClientHTTPErrorException(Uint32 httpStatusCode,
                                                         const String& reasonPhrase,
                                                         const String& cimError,
                                                         const String& cimErrorDetail)
    : Exception(_httpErrorText(httpStatusCode, reasonPhrase, cimError, cimErrorDetail)),
      _code(httpStatusCode), _reasonPhrase(reasonPhrase), _cimError(cimError),
      _cimErrorDetail(cimErrorDetail)
{
}

CIMClientHTTPErrorException::CIMClientHTTPErrorException(const CIMClientHTTPErrorException& e)
    : Exception(e), _code(e._code), _reasonPhrase(e._reasonPhrase), _cimError(e._cimError),
      _cimErrorDetail(e._cimErrorDetail)
{
}

CIMClientHTTPErrorException::~CIMClientHTTPErrorException()
{
}

Uint32 CIMClientHTTPErrorException::getCode() const
{
    return _code;
}

String CIMClientHTTPErrorException::getReasonPhrase() const
{
    return _reasonPhrase;
}

String CIMClientHTTPErrorException::getCIMError() const
{
    return _cimError;
}

String CIMClientHTTPErrorException::getCIMErrorDetail() const
{
    return _cimErrorDetail;
}

CIMClientXmlException::CIMClientXmlException(const String& message) : Exception(message)
{
}

CIMClientResponseException::CIMClientResponseException(const String& message)
    : Exception(message)
{
}

PEGASUS_NAMESPACE_END
