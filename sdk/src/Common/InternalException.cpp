#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>

#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

NullPointer::NullPointer() : Exception("null pointer") {}

UndeclaredQualifier::UndeclaredQualifier(const String& qualifierName)
    : Exception("undeclared qualifier: " + qualifierName)
{
}

BadQualifierScope::BadQualifierScope(const String& qualifierName, const String& scopeString)
    : Exception("qualifier invalid in this scope: " + qualifierName + " scope=" + scopeString)
{
}

BadQualifierOverride::BadQualifierOverride(const String& qualifierName)
    : Exception("qualifier not overridable: " + qualifierName)
{
}

BadQualifierType::BadQualifierType(const String& qualifierName)
    : Exception("CIMType of qualifier different than its declaration: " + qualifierName)
{
}

InstantiatedAbstractClass::InstantiatedAbstractClass(const String& className)
    : Exception("attempt to instantiate an abstract class " + className)
{
}

NoSuchProperty::NoSuchProperty(const String& propertyName)
    : Exception("no such property: " + propertyName)
{
}

NoSuchFile::NoSuchFile(const String& fileName) : Exception("no such file: " + fileName) {}

CannotOpenFile::CannotOpenFile(const String& path) : Exception("cannot open file: " + path) {}

NotImplemented::NotImplemented(const String& method) : Exception("not implemented: " + method) {}

TraceableCIMException::TraceableCIMException(CIMStatusCode code, const String& message,
                                             const String& file, Uint32 line)
    : CIMException(code, message)
{
    _file = file;
    _line = line;
}

TraceableCIMException::TraceableCIMException(CIMStatusCode code, const MessageLoaderParms& parms,
                                             const String& file, Uint32 line)
    : CIMException(code, parms)
{
    _file = file;
    _line = line;
}

TraceableCIMException::TraceableCIMException(const CIMException& cimException)
    : CIMException(cimException)
{
}

String TraceableCIMException::getDescription() const
{
    String text = cimStatusCodeToString(_code);
    if (_message.size())
    {
        text.append(": ");
        text.append(_message);
    }
    return text;
}

String TraceableCIMException::getTraceDescription() const
{
    if (_file.size() == 0)
    {
        return getDescription();
    }
    char line[16];
    snprintf(line, sizeof(line), "%u", _line);
    return _file + "(" + line + "): " + getDescription();
}

String TraceableCIMException::getCIMMessage() const
{
    return _message;
}

void TraceableCIMException::setCIMMessage(const String& cimMessage)
{
    _message = cimMessage;
}

String TraceableCIMException::getFile() const
{
    return _file;
}

Uint32 TraceableCIMException::getLine() const
{
    return _line;
}

PEGASUS_NAMESPACE_END
