#ifndef Pegasus_InternalException_h
#define Pegasus_InternalException_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

// Like OpenPegasus's, this internal header uses MessageLoaderParms without
// declaring it: a unit includes <Pegasus/Common/MessageLoader.h> first.

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE NullPointer : public Exception
{
public:
    NullPointer();
};

class PEGASUS_COMMON_LINKAGE UndeclaredQualifier : public Exception
{
public:
    UndeclaredQualifier(const String& qualifierName);
};

class PEGASUS_COMMON_LINKAGE BadQualifierScope : public Exception
{
public:
    BadQualifierScope(const String& qualifierName, const String& scopeString);
};

class PEGASUS_COMMON_LINKAGE BadQualifierOverride : public Exception
{
public:
    BadQualifierOverride(const String& qualifierName);
};

class PEGASUS_COMMON_LINKAGE BadQualifierType : public Exception
{
public:
    BadQualifierType(const String& qualifierName);
};

class PEGASUS_COMMON_LINKAGE InstantiatedAbstractClass : public Exception
{
public:
    InstantiatedAbstractClass(const String& className);
};

class PEGASUS_COMMON_LINKAGE NoSuchProperty : public Exception
{
public:
    NoSuchProperty(const String& propertyName);
};

class PEGASUS_COMMON_LINKAGE NoSuchFile : public Exception
{
public:
    NoSuchFile(const String& fileName);
};

class PEGASUS_COMMON_LINKAGE CannotOpenFile : public Exception
{
public:
    CannotOpenFile(const String& path);
};

class PEGASUS_COMMON_LINKAGE NotImplemented : public Exception
{
public:
    NotImplemented(const String& method);
};

// A CIMException that also records the source file and line that raised
// it, for traces; getMessage() is still the text given.
class PEGASUS_COMMON_LINKAGE TraceableCIMException : public CIMException
{
public:
    TraceableCIMException(CIMStatusCode code, const String& message, const String& file,
                          Uint32 line);
    TraceableCIMException(CIMStatusCode code, const MessageLoaderParms& parms, const String& file,
                          Uint32 line);
    TraceableCIMException(const CIMException& cimException);

    // "CIM_ERR_NAME: description: message" (without ": message" when empty).
    String getDescription() const;
    // getDescription() preceded by "file(line): " when the place is known.
    String getTraceDescription() const;
    String getCIMMessage() const;
    void setCIMMessage(const String& cimMessage);
    String getFile() const;
    Uint32 getLine() const;
};

#define PEGASUS_CIM_EXCEPTION(CODE, EXTRA_MESSAGE)                                                 \
    TraceableCIMException(CODE, EXTRA_MESSAGE, String(__FILE__), __LINE__)

#define PEGASUS_CIM_EXCEPTION_L(CODE, MSG_PARMS)                                                   \
    TraceableCIMException(CODE, MSG_PARMS, String(__FILE__), __LINE__)

PEGASUS_NAMESPACE_END

#endif
