#include <cimom/ParamTyping.h>

#include "Text.h"

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/Exception.h>

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <string>

PEGASUS_USING_PEGASUS;

namespace cimom
{

namespace
{

[[noreturn]] void badValue(const String& what, const std::string& text, const char* expected)
{
    throw CIMException(CIM_ERR_INVALID_PARAMETER,
                       what + String((": \"" + text + "\" is not " + expected).c_str()));
}

std::string trimmed(const std::string& s)
{
    std::string::size_type b = s.find_first_not_of(" \t\r\n");
    if (b == std::string::npos)
    {
        return std::string();
    }
    std::string::size_type e = s.find_last_not_of(" \t\r\n");
    return s.substr(b, e - b + 1);
}

bool parseSigned(const std::string& text, long long& out)
{
    if (text.empty())
    {
        return false;
    }
    const char* start = text.c_str();
    char* end = nullptr;
    errno = 0;
    bool hex = text.size() > 2 && (text[0] == '-' || text[0] == '+')
                   ? (text[1] == '0' && (text[2] == 'x' || text[2] == 'X'))
                   : (text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'));
    out = std::strtoll(start, &end, hex ? 16 : 10);
    return errno == 0 && end && *end == '\0' && end != start;
}

bool parseUnsigned(const std::string& text, unsigned long long& out)
{
    if (text.empty() || text[0] == '-')
    {
        return false;
    }
    const char* start = text.c_str();
    char* end = nullptr;
    errno = 0;
    bool hex = text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    out = std::strtoull(start, &end, hex ? 16 : 10);
    return errno == 0 && end && *end == '\0' && end != start;
}

template <class T> T toUnsigned(const String& what, const std::string& text, const char* typeName)
{
    unsigned long long v = 0;
    if (!parseUnsigned(text, v) || v > std::numeric_limits<T>::max())
    {
        badValue(what, text, typeName);
    }
    return static_cast<T>(v);
}

template <class T> T toSigned(const String& what, const std::string& text, const char* typeName)
{
    long long v = 0;
    if (!parseSigned(text, v) || v < std::numeric_limits<T>::min() ||
        v > std::numeric_limits<T>::max())
    {
        badValue(what, text, typeName);
    }
    return static_cast<T>(v);
}

double toReal(const String& what, const std::string& text)
{
    if (text.empty())
    {
        badValue(what, text, "a real number");
    }
    char* end = nullptr;
    errno = 0;
    double v = std::strtod(text.c_str(), &end);
    if (errno != 0 || !end || *end != '\0')
    {
        badValue(what, text, "a real number");
    }
    return v;
}

// One scalar from its text. Strings keep their exact text (no trimming).
CIMValue scalarFromText(const String& text, CIMType type, const String& what)
{
    std::string s = trimmed(toStd(text));
    switch (type)
    {
    case CIMTYPE_STRING:
        return CIMValue(text);
    case CIMTYPE_BOOLEAN:
        if (String::equalNoCase(String(s.c_str()), "true"))
        {
            return CIMValue(Boolean(true));
        }
        if (String::equalNoCase(String(s.c_str()), "false"))
        {
            return CIMValue(Boolean(false));
        }
        badValue(what, s, "a boolean (TRUE or FALSE)");
    case CIMTYPE_UINT8:
        return CIMValue(toUnsigned<Uint8>(what, s, "a uint8"));
    case CIMTYPE_UINT16:
        return CIMValue(toUnsigned<Uint16>(what, s, "a uint16"));
    case CIMTYPE_UINT32:
        return CIMValue(toUnsigned<Uint32>(what, s, "a uint32"));
    case CIMTYPE_UINT64:
        return CIMValue(toUnsigned<Uint64>(what, s, "a uint64"));
    case CIMTYPE_SINT8:
        return CIMValue(toSigned<Sint8>(what, s, "a sint8"));
    case CIMTYPE_SINT16:
        return CIMValue(toSigned<Sint16>(what, s, "a sint16"));
    case CIMTYPE_SINT32:
        return CIMValue(toSigned<Sint32>(what, s, "a sint32"));
    case CIMTYPE_SINT64:
        return CIMValue(toSigned<Sint64>(what, s, "a sint64"));
    case CIMTYPE_REAL32:
        return CIMValue(Real32(toReal(what, s)));
    case CIMTYPE_REAL64:
        return CIMValue(Real64(toReal(what, s)));
    case CIMTYPE_CHAR16:
        if (text.size() != 1)
        {
            badValue(what, toStd(text), "a single character");
        }
        return CIMValue(text[0]);
    case CIMTYPE_DATETIME:
        try
        {
            return CIMValue(CIMDateTime(String(s.c_str())));
        }
        catch (const Exception&)
        {
            badValue(what, s, "a CIM datetime");
        }
    case CIMTYPE_REFERENCE:
        try
        {
            return CIMValue(CIMObjectPath(String(s.c_str())));
        }
        catch (const Exception&)
        {
            badValue(what, s, "an object path");
        }
    default:
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
                           what + " has a type that cannot be given as text");
    }
}

template <class T> CIMValue collect(const Array<String>& texts, CIMType type, const String& what)
{
    Array<T> out;
    for (Uint32 i = 0; i < texts.size(); i++)
    {
        T item;
        scalarFromText(texts[i], type, what).get(item);
        out.append(item);
    }
    return CIMValue(out);
}

CIMValue arrayFromText(const Array<String>& texts, CIMType type, const String& what)
{
    switch (type)
    {
    case CIMTYPE_STRING:
        return CIMValue(texts);
    case CIMTYPE_BOOLEAN:
        return collect<Boolean>(texts, type, what);
    case CIMTYPE_UINT8:
        return collect<Uint8>(texts, type, what);
    case CIMTYPE_UINT16:
        return collect<Uint16>(texts, type, what);
    case CIMTYPE_UINT32:
        return collect<Uint32>(texts, type, what);
    case CIMTYPE_UINT64:
        return collect<Uint64>(texts, type, what);
    case CIMTYPE_SINT8:
        return collect<Sint8>(texts, type, what);
    case CIMTYPE_SINT16:
        return collect<Sint16>(texts, type, what);
    case CIMTYPE_SINT32:
        return collect<Sint32>(texts, type, what);
    case CIMTYPE_SINT64:
        return collect<Sint64>(texts, type, what);
    case CIMTYPE_REAL32:
        return collect<Real32>(texts, type, what);
    case CIMTYPE_REAL64:
        return collect<Real64>(texts, type, what);
    case CIMTYPE_CHAR16:
        return collect<Char16>(texts, type, what);
    case CIMTYPE_DATETIME:
        return collect<CIMDateTime>(texts, type, what);
    case CIMTYPE_REFERENCE:
        return collect<CIMObjectPath>(texts, type, what);
    default:
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
                           what + " has a type that cannot be given as text");
    }
}

} // namespace

CIMValue convertTextValue(const CIMValue& text, CIMType type, Boolean isArray, const String& what)
{
    if (text.isNull())
    {
        CIMValue nullValue;
        nullValue.setNullValue(type, isArray);
        return nullValue;
    }
    if (text.getType() != CIMTYPE_STRING)
    {
        throw CIMException(CIM_ERR_INVALID_PARAMETER, what + " is not given as text");
    }
    if (isArray)
    {
        Array<String> texts;
        if (text.isArray())
        {
            text.get(texts);
        }
        else
        {
            String one;
            text.get(one);
            texts.append(one);
        }
        return arrayFromText(texts, type, what);
    }
    if (text.isArray())
    {
        throw CIMException(CIM_ERR_INVALID_PARAMETER, what + " takes one value, not an array");
    }
    String one;
    text.get(one);
    return scalarFromText(one, type, what);
}

Array<CIMParamValue> typeInParameters(const CIMMethod& method,
                                      const Array<CIMParamValue>& inParameters)
{
    Array<CIMParamValue> typed;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        const CIMParamValue& given = inParameters[i];
        const String name = given.getParameterName();
        Uint32 pos = PEG_NOT_FOUND;
        try
        {
            pos = method.findParameter(CIMName(name));
        }
        catch (const Exception&)
        {
            pos = PEG_NOT_FOUND; // not even a legal name
        }
        if (pos == PEG_NOT_FOUND)
        {
            // Passed on as given, as OpenPegasus does: the provider judges
            // parameters its method does not declare.
            typed.append(given);
            continue;
        }
        CIMConstParameter declared = method.getParameter(pos);
        const String what = "parameter " + declared.getName().getString() + " of method " +
                            method.getName().getString();
        CIMValue value = given.getValue();

        bool textForReference = declared.getType() == CIMTYPE_REFERENCE && !value.isNull() &&
                                value.getType() == CIMTYPE_STRING;
        if (!given.isTyped() || textForReference)
        {
            value = convertTextValue(value, declared.getType(), declared.isArray(), what);
        }
        typed.append(CIMParamValue(declared.getName().getString(), value, true));
    }
    return typed;
}

} // namespace cimom
