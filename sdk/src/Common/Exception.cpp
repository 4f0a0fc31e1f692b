#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>

PEGASUS_NAMESPACE_BEGIN

void ArrayThrowIndexOutOfBoundsException()
{
    throw IndexOutOfBoundsException();
}

Exception::Exception() {}

Exception::Exception(const String& message) : _message(message) {}

Exception::Exception(const Exception& exception) = default;

Exception::Exception(const MessageLoaderParms& msgParms) : _message(msgParms.toString()) {}

Exception::~Exception() {}

Exception& Exception::operator=(const Exception& exception) = default;

const String& Exception::getMessage() const
{
    return _message;
}

IndexOutOfBoundsException::IndexOutOfBoundsException() : Exception("index out of bounds") {}

AlreadyExistsException::AlreadyExistsException(const String& message)
    : Exception("object already exists: " + message)
{
}

AlreadyExistsException::AlreadyExistsException(MessageLoaderParms& msgParms)
    : Exception("object already exists: " + msgParms.toString())
{
}

InvalidNameException::InvalidNameException(const String& name)
    : Exception("invalid CIM name: " + name)
{
}

InvalidNameException::InvalidNameException(MessageLoaderParms& msgParms)
    : Exception("invalid CIM name: " + msgParms.toString())
{
}

InvalidNamespaceNameException::InvalidNamespaceNameException(const String& name)
    : Exception("invalid CIM namespace name: " + name)
{
}

InvalidNamespaceNameException::InvalidNamespaceNameException(MessageLoaderParms& msgParms)
    : Exception("invalid CIM namespace name: " + msgParms.toString())
{
}

UninitializedObjectException::UninitializedObjectException() : Exception("uninitialized object") {}

TypeMismatchException::TypeMismatchException() : Exception("type mismatch") {}

TypeMismatchException::TypeMismatchException(const String& message)
    : Exception("type mismatch: " + message)
{
}

TypeMismatchException::TypeMismatchException(MessageLoaderParms& msgParms)
    : Exception("type mismatch: " + msgParms.toString())
{
}

DynamicCastFailedException::DynamicCastFailedException() : Exception("dynamic cast failed") {}

InvalidDateTimeFormatException::InvalidDateTimeFormatException()
    : Exception("invalid datetime format")
{
}

DateTimeOutOfRangeException::DateTimeOutOfRangeException(const String& message)
    : Exception("DateTime is out of range : " + message)
{
}

DateTimeOutOfRangeException::DateTimeOutOfRangeException(MessageLoaderParms& msgParms)
    : Exception("DateTime is out of range : " + msgParms.toString())
{
}

MalformedObjectNameException::MalformedObjectNameException(const String& objectName)
    : Exception("malformed object name: " + objectName)
{
}

MalformedObjectNameException::MalformedObjectNameException(MessageLoaderParms& msgParms)
    : Exception("malformed object name: " + msgParms.toString())
{
}

BindFailedException::BindFailedException(const String& message)
    : Exception("Bind failed: " + message)
{
}

BindFailedException::BindFailedException(MessageLoaderParms& msgParms)
    : Exception("Bind failed: " + msgParms.toString())
{
}

InvalidLocatorException::InvalidLocatorException(const String& locator)
    : Exception("Invalid locator: " + locator)
{
}

InvalidLocatorException::InvalidLocatorException(MessageLoaderParms& msgParms)
    : Exception("Invalid locator: " + msgParms.toString())
{
}

CannotCreateSocketException::CannotCreateSocketException() : Exception("Cannot create socket") {}

CannotConnectException::CannotConnectException(const String& message) : Exception(message) {}

CannotConnectException::CannotConnectException(MessageLoaderParms& msgParms) : Exception(msgParms)
{
}

AlreadyConnectedException::AlreadyConnectedException() : Exception("already connected") {}

NotConnectedException::NotConnectedException() : Exception("not connected") {}

ConnectionTimeoutException::ConnectionTimeoutException() : Exception("connection timed out") {}

SSLException::SSLException(const String& message) : Exception("SSL Exception: " + message) {}

SSLException::SSLException(MessageLoaderParms& msgParms)
    : Exception("SSL Exception: " + msgParms.toString())
{
}

//
// CIMException
//

CIMException::CIMException(CIMStatusCode code, const String& message)
    : Exception(message), _code(code), _line(0)
{
}

CIMException::CIMException(CIMStatusCode code, const MessageLoaderParms& msgParms)
    : Exception(msgParms), _code(code), _line(0)
{
}

CIMException::CIMException(CIMStatusCode code, const String& message,
                           const CIMInstance& instance)
    : Exception(message), _code(code), _line(0),
      _errors(std::make_shared<const std::vector<CIMInstance>>(1, instance))
{
}

CIMException::CIMException(CIMStatusCode code, const String& message,
                           const Array<CIMInstance>& instances)
    : Exception(message), _code(code), _line(0),
      _errors(std::make_shared<const std::vector<CIMInstance>>(
          instances.getData(), instances.getData() + instances.size()))
{
}

CIMException::CIMException(const CIMException& cimException) = default;

CIMException& CIMException::operator=(const CIMException& cimException) = default;

CIMException::~CIMException() {}

CIMStatusCode CIMException::getCode() const
{
    return _code;
}

Uint32 CIMException::getErrorCount() const
{
    return _errors ? Uint32(_errors->size()) : 0;
}

CIMConstInstance CIMException::getError(Uint32 index) const
{
    if (index >= getErrorCount())
    {
        throw IndexOutOfBoundsException();
    }
    return (*_errors)[index];
}

void CIMException::addError(const CIMInstance& instance)
{
    auto errors = _errors ? std::make_shared<std::vector<CIMInstance>>(*_errors)
                          : std::make_shared<std::vector<CIMInstance>>();
    errors->push_back(instance);
    _errors = errors;
}

PEGASUS_NAMESPACE_END
