#ifndef Pegasus_Exception_h
#define Pegasus_Exception_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/String.h>

#include <memory>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

class CIMInstance;
class CIMConstInstance;

// Base of every exception the SDK throws. getMessage() is the text given.
class PEGASUS_COMMON_LINKAGE Exception
{
public:
    Exception(const String& message);
    Exception(const Exception& exception);
    Exception(const MessageLoaderParms& msgParms);
    virtual ~Exception();
    Exception& operator=(const Exception& exception);
    virtual const String& getMessage() const;

protected:
    Exception();
    String _message;
};

class PEGASUS_COMMON_LINKAGE IndexOutOfBoundsException : public Exception
{
public:
    IndexOutOfBoundsException();
};

class PEGASUS_COMMON_LINKAGE AlreadyExistsException : public Exception
{
public:
    AlreadyExistsException(const String& message);
    AlreadyExistsException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE InvalidNameException : public Exception
{
public:
    InvalidNameException(const String& name);
    InvalidNameException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE InvalidNamespaceNameException : public Exception
{
public:
    InvalidNamespaceNameException(const String& name);
    InvalidNamespaceNameException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE UninitializedObjectException : public Exception
{
public:
    UninitializedObjectException();
};

class PEGASUS_COMMON_LINKAGE TypeMismatchException : public Exception
{
public:
    TypeMismatchException();
    TypeMismatchException(const String& message);
    TypeMismatchException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE DynamicCastFailedException : public Exception
{
public:
    DynamicCastFailedException();
};

class PEGASUS_COMMON_LINKAGE InvalidDateTimeFormatException : public Exception
{
public:
    InvalidDateTimeFormatException();
};

class PEGASUS_COMMON_LINKAGE DateTimeOutOfRangeException : public Exception
{
public:
    DateTimeOutOfRangeException(const String& message);
    DateTimeOutOfRangeException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE MalformedObjectNameException : public Exception
{
public:
    MalformedObjectNameException(const String& objectName);
    MalformedObjectNameException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE BindFailedException : public Exception
{
public:
    BindFailedException(const String& message);
    BindFailedException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE InvalidLocatorException : public Exception
{
public:
    InvalidLocatorException(const String& locator);
    InvalidLocatorException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE CannotCreateSocketException : public Exception
{
public:
    CannotCreateSocketException();
};

class PEGASUS_COMMON_LINKAGE CannotConnectException : public Exception
{
public:
    CannotConnectException(const String& message);
    CannotConnectException(MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE AlreadyConnectedException : public Exception
{
public:
    AlreadyConnectedException();
};

class PEGASUS_COMMON_LINKAGE NotConnectedException : public Exception
{
public:
    NotConnectedException();
};

class PEGASUS_COMMON_LINKAGE ConnectionTimeoutException : public Exception
{
public:
    ConnectionTimeoutException();
};

class PEGASUS_COMMON_LINKAGE SSLException : public Exception
{
public:
    SSLException(const String& message);
    SSLException(MessageLoaderParms& msgParms);
};

// An error answer to a CIM operation: a status code and a free text, which
// getMessage() returns unchanged.
class PEGASUS_COMMON_LINKAGE CIMException : public Exception
{
public:
    CIMException(CIMStatusCode code = CIM_ERR_SUCCESS, const String& message = String::EMPTY);
    // With CIM_Error instances attached, taken as they are.
    CIMException(CIMStatusCode code, const String& message, const CIMInstance& instance);
    CIMException(CIMStatusCode code, const String& message, const Array<CIMInstance>& instances);
    CIMException(CIMStatusCode code, const MessageLoaderParms& msgParms);
    CIMException(const CIMException& cimException);
    CIMException& operator=(const CIMException& cimException);
    virtual ~CIMException();

    CIMStatusCode getCode() const;

    Uint32 getErrorCount() const;
    // Throws IndexOutOfBoundsException past the last one.
    CIMConstInstance getError(Uint32 index) const;
    void addError(const CIMInstance& instance);

protected:
    CIMStatusCode _code;
    // Where the exception was raised, when known (see TraceableCIMException).
    String _file;
    Uint32 _line;

private:
    // Shared between copies and replaced, never changed, on addError.
    std::shared_ptr<const std::vector<CIMInstance>> _errors;
};

PEGASUS_NAMESPACE_END

#endif
