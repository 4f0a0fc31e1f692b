#include <cimrepo/MofCompiler.h>

#include "MofParser.h"

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <cctype>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>

using namespace Pegasus;

namespace cimrepo
{
namespace
{

using mof::Literal;

const int maxIncludeDepth = 32;

std::string text(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

std::string lower(std::string s)
{
    for (char& c : s)
    {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return s;
}

bool readFile(const std::string& path, std::string& out)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
    {
        return false;
    }
    std::ostringstream ss;
    ss << in.rdbuf();
    out = ss.str();
    return !in.bad();
}

std::string directoryOf(const std::string& path)
{
    std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// ---------------------------------------------------------------- types

struct TypeName
{
    const char* name;
    CIMType type;
};

const TypeName typeNames[] = {
    {"boolean", CIMTYPE_BOOLEAN},   {"string", CIMTYPE_STRING}, {"char16", CIMTYPE_CHAR16},
    {"datetime", CIMTYPE_DATETIME}, {"uint8", CIMTYPE_UINT8},   {"sint8", CIMTYPE_SINT8},
    {"uint16", CIMTYPE_UINT16},     {"sint16", CIMTYPE_SINT16}, {"uint32", CIMTYPE_UINT32},
    {"sint32", CIMTYPE_SINT32},     {"uint64", CIMTYPE_UINT64}, {"sint64", CIMTYPE_SINT64},
    {"real32", CIMTYPE_REAL32},     {"real64", CIMTYPE_REAL64}, {"ref", CIMTYPE_REFERENCE},
};

CIMType typeOf(const std::string& name)
{
    for (const TypeName& t : typeNames)
    {
        if (name == t.name)
        {
            return t.type;
        }
    }
    return CIMTYPE_STRING; // the parser admits no other names
}

const char* nameOf(CIMType type)
{
    for (const TypeName& t : typeNames)
    {
        if (t.type == type)
        {
            return t.type == CIMTYPE_REFERENCE ? "reference" : t.name;
        }
    }
    return "value";
}

// ---------------------------------------------------------------- flavors and scopes

void applyFlavor(CIMFlavor& flavor, const std::string& name)
{
    std::string f = lower(name);
    if (f == "enableoverride")
    {
        flavor.removeFlavor(CIMFlavor::DISABLEOVERRIDE);
        flavor.addFlavor(CIMFlavor::ENABLEOVERRIDE);
    }
    else if (f == "disableoverride")
    {
        flavor.removeFlavor(CIMFlavor::ENABLEOVERRIDE);
        flavor.addFlavor(CIMFlavor::DISABLEOVERRIDE);
    }
    else if (f == "tosubclass")
    {
        flavor.removeFlavor(CIMFlavor::RESTRICTED);
        flavor.addFlavor(CIMFlavor::TOSUBCLASS);
    }
    else if (f == "restricted")
    {
        flavor.removeFlavor(CIMFlavor::TOSUBCLASS);
        flavor.addFlavor(CIMFlavor::RESTRICTED);
    }
    else if (f == "translatable")
    {
        flavor.addFlavor(CIMFlavor::TRANSLATABLE);
    }
    else if (f == "toinstance")
    {
        flavor.addFlavor(CIMFlavor::TOINSTANCE);
    }
}

CIMScope scopeOf(const std::string& name)
{
    std::string s = lower(name);
    if (s == "class")
        return CIMScope::CLASS;
    if (s == "association")
        return CIMScope::ASSOCIATION;
    if (s == "indication")
        return CIMScope::INDICATION;
    if (s == "property")
        return CIMScope::PROPERTY;
    if (s == "reference")
        return CIMScope::REFERENCE;
    if (s == "method")
        return CIMScope::METHOD;
    if (s == "parameter")
        return CIMScope::PARAMETER;
    if (s == "any")
        return CIMScope::ANY;
    return CIMScope::NONE; // "qualifier" scope has no element in this model
}

// The DMTF qualifiers with their standard type and flavor, so MOF may use them undeclared.
struct KnownQualifier
{
    const char* name;
    CIMType type;
    bool isArray;
    bool restricted;
    bool disableOverride;
    bool translatable;
};

const KnownQualifier knownQualifiers[] = {
    {"Abstract", CIMTYPE_BOOLEAN, false, true, false, false},
    {"Aggregate", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Aggregation", CIMTYPE_BOOLEAN, false, false, true, false},
    {"ArrayType", CIMTYPE_STRING, false, false, true, false},
    {"Association", CIMTYPE_BOOLEAN, false, false, true, false},
    {"BitMap", CIMTYPE_STRING, true, false, false, false},
    {"BitValues", CIMTYPE_STRING, true, false, false, true},
    {"ClassConstraint", CIMTYPE_STRING, true, false, false, false},
    {"Composition", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Correlatable", CIMTYPE_STRING, true, false, false, false},
    {"Counter", CIMTYPE_BOOLEAN, false, false, false, false},
    {"Deprecated", CIMTYPE_STRING, true, true, false, false},
    {"Description", CIMTYPE_STRING, false, false, false, true},
    {"DisplayName", CIMTYPE_STRING, false, false, false, true},
    {"DN", CIMTYPE_BOOLEAN, false, false, true, false},
    {"EmbeddedInstance", CIMTYPE_STRING, false, false, false, false},
    {"EmbeddedObject", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Exception", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Experimental", CIMTYPE_BOOLEAN, false, true, false, false},
    {"Gauge", CIMTYPE_BOOLEAN, false, false, false, false},
    {"In", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Indication", CIMTYPE_BOOLEAN, false, false, true, false},
    {"IsPUnit", CIMTYPE_BOOLEAN, false, false, false, false},
    {"Key", CIMTYPE_BOOLEAN, false, false, true, false},
    {"MappingStrings", CIMTYPE_STRING, true, false, false, false},
    {"Max", CIMTYPE_UINT32, false, false, false, false},
    {"MaxLen", CIMTYPE_UINT32, false, false, false, false},
    {"MaxValue", CIMTYPE_SINT64, false, false, false, false},
    {"MethodConstraint", CIMTYPE_STRING, true, false, false, false},
    {"Min", CIMTYPE_UINT32, false, false, false, false},
    {"MinLen", CIMTYPE_UINT32, false, false, false, false},
    {"MinValue", CIMTYPE_SINT64, false, false, false, false},
    {"ModelCorrespondence", CIMTYPE_STRING, true, false, false, false},
    {"NullValue", CIMTYPE_STRING, false, false, true, false},
    {"OctetString", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Out", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Override", CIMTYPE_STRING, false, true, false, false},
    {"Propagated", CIMTYPE_STRING, false, false, true, false},
    {"PropertyConstraint", CIMTYPE_STRING, true, false, false, false},
    {"PUnit", CIMTYPE_STRING, false, false, false, false},
    {"Read", CIMTYPE_BOOLEAN, false, false, false, false},
    {"Required", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Revision", CIMTYPE_STRING, false, false, false, true},
    {"Schema", CIMTYPE_STRING, false, false, true, true},
    {"Static", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Terminal", CIMTYPE_BOOLEAN, false, false, false, false},
    {"UMLPackagePath", CIMTYPE_STRING, false, false, false, false},
    {"Units", CIMTYPE_STRING, false, false, false, true},
    {"ValueMap", CIMTYPE_STRING, true, false, false, false},
    {"Values", CIMTYPE_STRING, true, false, false, true},
    {"Version", CIMTYPE_STRING, false, true, false, true},
    {"Weak", CIMTYPE_BOOLEAN, false, false, true, false},
    {"Write", CIMTYPE_BOOLEAN, false, false, false, false},
};

const KnownQualifier* findKnown(const std::string& name)
{
    std::string l = lower(name);
    for (const KnownQualifier& k : knownQualifiers)
    {
        if (lower(k.name) == l)
        {
            return &k;
        }
    }
    return nullptr;
}

// How one qualifier is typed and flavored where it is used.
struct QualifierInfo
{
    CIMType type = CIMTYPE_STRING;
    bool isArray = false;
    CIMFlavor flavor = CIMFlavor::DEFAULTS;
    bool declared = false;
    CIMScope scope;
    CIMValue defaultValue;
    bool inferred = false;
};

// What a qualifier is attached to, for the scope check and messages.
struct Element
{
    CIMScope scope;
    std::string description;
    bool isAssociation = false;
    bool isIndication = false;
};

template <class T> CIMValue arrayValue(const std::vector<T>& items)
{
    Array<T> a;
    for (const T& t : items)
    {
        a.append(t);
    }
    return CIMValue(a);
}

// ---------------------------------------------------------------- the compilation of one file

class Unit
{
public:
    Unit(ClassRepository& repo, std::vector<MofInstance>& instances,
         std::map<std::string, CIMObjectPath>& aliases, const std::string& file,
         const CIMNamespaceName& ns, std::size_t& classCount, std::size_t& qualifierCount)
        : _repo(repo), _instances(instances), _aliases(aliases), _file(file), _ns(ns),
          _classCount(classCount), _qualifierCount(qualifierCount)
    {
    }

    template <class IncludeFn>
    void run(const std::vector<mof::Production>& productions, IncludeFn include)
    {
        for (const mof::Production& p : productions)
        {
            int line = 0;
            try
            {
                switch (p.kind)
                {
                case mof::Production::PRAGMA:
                    line = p.pragma.line;
                    _pragma(p.pragma, include);
                    break;
                case mof::Production::QUALIFIER_DECL:
                    line = p.qualifierDecl.line;
                    _qualifierDecl(p.qualifierDecl);
                    break;
                case mof::Production::CLASS:
                    line = p.classDecl.line;
                    _class(p.classDecl);
                    break;
                case mof::Production::INSTANCE:
                    line = p.instance.line;
                    _instance(p.instance);
                    break;
                }
            }
            catch (MofError&)
            {
                throw;
            }
            catch (CIMException& e)
            {
                throw MofError(_file, line, text(e.getMessage()));
            }
            catch (Exception& e)
            {
                throw MofError(_file, line, text(e.getMessage()));
            }
        }
    }

private:
    [[noreturn]] void _fail(int line, const std::string& message)
    {
        throw MofError(_file, line, message);
    }

    CIMName _name(const std::string& s, int line, const char* what)
    {
        try
        {
            return CIMName(String(s.c_str()));
        }
        catch (Exception&)
        {
            _fail(line, std::string("expected a valid ") + what + ", found '" + s + "'");
        }
    }

    // ---- pragmas

    template <class IncludeFn> void _pragma(const mof::PragmaNode& p, IncludeFn include)
    {
        std::string name = lower(p.name);
        if (name == "include")
        {
            if (p.arguments.size() != 1)
            {
                _fail(p.line, "expected one file name in #pragma include");
            }
            include(p.arguments[0], p.line, _ns);
        }
        else if (name == "namespace")
        {
            std::string target;
            if (p.arguments.size() == 1)
            {
                target = p.arguments[0];
            }
            else if (p.arguments.size() == 2 &&
                     (lower(p.arguments[0]) == "__set" || lower(p.arguments[0]) == "__create"))
            {
                target = p.arguments[1];
            }
            else
            {
                _fail(p.line, "expected one namespace name in #pragma namespace");
            }
            try
            {
                _ns = CIMNamespaceName(String(target.c_str()));
            }
            catch (Exception&)
            {
                _fail(p.line, "expected a valid namespace name, found '" + target + "'");
            }
            _repo.createNamespace(_ns);
        }
        // locale, instancelocale, source and the rest do not change what is compiled
    }

    // ---- values

    [[noreturn]] void _wrongValue(const Literal& l, CIMType type, bool isArray)
    {
        _fail(l.line, std::string("expected ") + (isArray ? "an array of " : "a ") + nameOf(type) +
                          " value");
    }

    template <class T>
    T _integer(const Literal& l, CIMType type, bool isArray, long double min, long double max)
    {
        if (l.kind != Literal::INTEGER)
        {
            _wrongValue(l, type, isArray);
        }
        long double v = l.negative ? -static_cast<long double>(l.magnitude)
                                   : static_cast<long double>(l.magnitude);
        if (v < min || v > max)
        {
            _fail(l.line, std::string("value out of range for ") + nameOf(type));
        }
        if (l.negative)
        {
            // Two's complement of the magnitude also covers the most negative sint64.
            return static_cast<T>(static_cast<std::int64_t>(0 - l.magnitude));
        }
        return static_cast<T>(l.magnitude);
    }

    double _real(const Literal& l, CIMType type, bool isArray)
    {
        if (l.kind == Literal::REAL)
        {
            return l.real;
        }
        if (l.kind == Literal::INTEGER)
        {
            double m = static_cast<double>(l.magnitude);
            return l.negative ? -m : m;
        }
        _wrongValue(l, type, isArray);
    }

    CIMObjectPath _reference(const Literal& l, bool isArray)
    {
        if (l.kind == Literal::ALIAS)
        {
            auto it = _aliases.find(lower(l.text));
            if (it == _aliases.end())
            {
                _fail(l.line, "expected a defined alias, found '$" + l.text + "'");
            }
            return it->second;
        }
        if (l.kind != Literal::STRING)
        {
            _wrongValue(l, CIMTYPE_REFERENCE, isArray);
        }
        try
        {
            return CIMObjectPath(String(l.text.c_str()));
        }
        catch (Exception&)
        {
            _fail(l.line, "expected an object path, found \"" + l.text + "\"");
        }
    }

    // The elements of a literal converted to one CIM type. Scalars of the right type only.
    template <class T, class Fn> CIMValue _typed(const Literal& l, bool isArray, Fn one)
    {
        if (!isArray)
        {
            return CIMValue(one(l));
        }
        std::vector<T> items;
        for (const Literal& e : l.elements)
        {
            items.push_back(one(e));
        }
        return arrayValue(items);
    }

    CIMValue _value(const Literal& l, CIMType type, bool isArray, Uint32 arraySize = 0)
    {
        if (l.kind == Literal::NONE || l.kind == Literal::NUL)
        {
            return CIMValue(type, isArray, arraySize);
        }
        if (isArray != (l.kind == Literal::ARRAY))
        {
            _wrongValue(l, type, isArray);
        }
        if (isArray)
        {
            for (const Literal& e : l.elements)
            {
                if (e.kind == Literal::NUL)
                {
                    _fail(e.line, "expected a value, found null in an array");
                }
            }
            if (arraySize != 0 && l.elements.size() > arraySize)
            {
                _fail(l.line, "expected at most " + std::to_string(arraySize) + " array elements");
            }
        }
        switch (type)
        {
        case CIMTYPE_BOOLEAN:
            return _typed<Boolean>(l, isArray,
                                   [&](const Literal& e)
                                   {
                                       if (e.kind != Literal::BOOLEAN)
                                           _wrongValue(e, type, isArray);
                                       return Boolean(e.boolean);
                                   });
        case CIMTYPE_UINT8:
            return _typed<Uint8>(l, isArray,
                                 [&](const Literal& e)
                                 { return _integer<Uint8>(e, type, isArray, 0, 255); });
        case CIMTYPE_SINT8:
            return _typed<Sint8>(l, isArray,
                                 [&](const Literal& e)
                                 { return _integer<Sint8>(e, type, isArray, -128, 127); });
        case CIMTYPE_UINT16:
            return _typed<Uint16>(l, isArray,
                                  [&](const Literal& e)
                                  { return _integer<Uint16>(e, type, isArray, 0, 65535); });
        case CIMTYPE_SINT16:
            return _typed<Sint16>(l, isArray,
                                  [&](const Literal& e)
                                  { return _integer<Sint16>(e, type, isArray, -32768, 32767); });
        case CIMTYPE_UINT32:
            return _typed<Uint32>(l, isArray,
                                  [&](const Literal& e)
                                  { return _integer<Uint32>(e, type, isArray, 0, 4294967295.0L); });
        case CIMTYPE_SINT32:
            return _typed<Sint32>(
                l, isArray,
                [&](const Literal& e)
                { return _integer<Sint32>(e, type, isArray, -2147483648.0L, 2147483647.0L); });
        case CIMTYPE_UINT64:
            return _typed<Uint64>(
                l, isArray,
                [&](const Literal& e)
                { return _integer<Uint64>(e, type, isArray, 0, 18446744073709551615.0L); });
        case CIMTYPE_SINT64:
            return _typed<Sint64>(l, isArray,
                                  [&](const Literal& e) {
                                      return _integer<Sint64>(e, type, isArray,
                                                              -9223372036854775808.0L,
                                                              9223372036854775807.0L);
                                  });
        case CIMTYPE_REAL32:
            return _typed<Real32>(l, isArray,
                                  [&](const Literal& e)
                                  { return static_cast<Real32>(_real(e, type, isArray)); });
        case CIMTYPE_REAL64:
            return _typed<Real64>(l, isArray,
                                  [&](const Literal& e) { return _real(e, type, isArray); });
        case CIMTYPE_CHAR16:
            return _typed<Char16>(l, isArray,
                                  [&](const Literal& e)
                                  {
                                      if (e.kind == Literal::CHAR)
                                          return Char16(e.character);
                                      if (e.kind == Literal::STRING)
                                      {
                                          String s(e.text.c_str());
                                          if (s.size() == 1)
                                              return s[0];
                                      }
                                      _wrongValue(e, type, isArray);
                                  });
        case CIMTYPE_STRING:
            return _typed<String>(l, isArray,
                                  [&](const Literal& e)
                                  {
                                      if (e.kind != Literal::STRING)
                                          _wrongValue(e, type, isArray);
                                      return String(e.text.c_str());
                                  });
        case CIMTYPE_DATETIME:
            return _typed<CIMDateTime>(l, isArray,
                                       [&](const Literal& e)
                                       {
                                           if (e.kind != Literal::STRING)
                                               _wrongValue(e, type, isArray);
                                           try
                                           {
                                               return CIMDateTime(String(e.text.c_str()));
                                           }
                                           catch (Exception&)
                                           {
                                               _fail(e.line, "expected a datetime value, found \"" +
                                                                 e.text + "\"");
                                           }
                                       });
        case CIMTYPE_REFERENCE:
            return _typed<CIMObjectPath>(l, isArray,
                                         [&](const Literal& e) { return _reference(e, isArray); });
        default:
            _fail(l.line, "values of this type cannot be written in MOF");
        }
    }

    // ---- qualifiers

    QualifierInfo _qualifierInfo(const mof::QualifierNode& q)
    {
        QualifierInfo info;
        CIMQualifierDecl decl =
            _repo.findQualifierDecl(_ns, _name(q.name, q.line, "qualifier name"));
        if (!decl.isUninitialized())
        {
            info.type = decl.getType();
            info.isArray = decl.isArray();
            info.flavor = decl.getFlavor();
            info.declared = true;
            info.scope = decl.getScope();
            info.defaultValue = decl.getValue();
            return info;
        }
        if (const KnownQualifier* k = findKnown(q.name))
        {
            info.type = k->type;
            info.isArray = k->isArray;
            if (k->restricted)
                applyFlavor(info.flavor, "Restricted");
            if (k->disableOverride)
                applyFlavor(info.flavor, "DisableOverride");
            if (k->translatable)
                applyFlavor(info.flavor, "Translatable");
            info.defaultValue = CIMValue(info.type, info.isArray);
            return info;
        }
        // Unknown and undeclared: the value decides the type.
        info.inferred = true;
        const Literal& v = q.value;
        const Literal* sample = &v;
        if (v.kind == Literal::ARRAY)
        {
            info.isArray = true;
            sample = v.elements.empty() ? nullptr : &v.elements[0];
        }
        if (!sample || sample->kind == Literal::STRING || sample->kind == Literal::NUL)
            info.type = CIMTYPE_STRING;
        else if (sample->kind == Literal::NONE || sample->kind == Literal::BOOLEAN)
            info.type = CIMTYPE_BOOLEAN;
        else if (sample->kind == Literal::INTEGER)
            info.type = sample->negative ? CIMTYPE_SINT64 : CIMTYPE_UINT64;
        else if (sample->kind == Literal::REAL)
            info.type = CIMTYPE_REAL64;
        else if (sample->kind == Literal::CHAR)
            info.type = CIMTYPE_CHAR16;
        else
            _fail(sample->line, "expected a qualifier value");
        info.defaultValue = CIMValue(info.type, info.isArray);
        return info;
    }

    bool _scopeAllows(const CIMScope& scope, const Element& element)
    {
        if (scope.hasScope(CIMScope::ANY) || scope.hasScope(element.scope))
        {
            return true;
        }
        if (element.scope.equal(CIMScope::CLASS))
        {
            return (element.isAssociation && scope.hasScope(CIMScope::ASSOCIATION)) ||
                   (element.isIndication && scope.hasScope(CIMScope::INDICATION));
        }
        return false;
    }

    template <class Target>
    void _addQualifiers(Target& target, const mof::QualifierList& list, const Element& element)
    {
        std::set<std::string> seen;
        for (const mof::QualifierNode& q : list)
        {
            if (!seen.insert(lower(q.name)).second)
            {
                _fail(q.line, "qualifier " + q.name + " is given twice on " + element.description);
            }
            QualifierInfo info = _qualifierInfo(q);
            if (info.declared && !_scopeAllows(info.scope, element))
            {
                _fail(q.line, "qualifier " + q.name + " is not allowed on " + element.description);
            }
            CIMValue value;
            if (q.value.isNone())
            {
                value = info.type == CIMTYPE_BOOLEAN && !info.isArray ? CIMValue(Boolean(true))
                                                                      : info.defaultValue;
            }
            else if (info.isArray && q.value.kind != Literal::ARRAY && q.value.kind != Literal::NUL)
            {
                // A lone value for an array qualifier is taken as a one-element array.
                Literal wrapped;
                wrapped.kind = Literal::ARRAY;
                wrapped.line = q.value.line;
                wrapped.elements.push_back(q.value);
                value = _value(wrapped, info.type, true);
            }
            else
            {
                value = _value(q.value, info.type, info.isArray);
            }
            CIMFlavor flavor = info.flavor;
            for (const std::string& f : q.flavors)
            {
                applyFlavor(flavor, f);
            }
            target.addQualifier(
                CIMQualifier(_name(q.name, q.line, "qualifier name"), value, flavor));
        }
    }

    static bool _booleanQualifier(const mof::QualifierList& list, const char* name)
    {
        for (const mof::QualifierNode& q : list)
        {
            if (lower(q.name) == lower(name))
            {
                return q.value.isNone() || (q.value.kind == Literal::BOOLEAN && q.value.boolean);
            }
        }
        return false;
    }

    // ---- declarations

    void _qualifierDecl(const mof::QualifierDeclNode& d)
    {
        CIMType type = typeOf(d.type);
        CIMValue value = _value(d.defaultValue, type, d.isArray, d.arraySize);
        CIMScope scope;
        for (const std::string& s : d.scopes)
        {
            scope.addScope(scopeOf(s));
        }
        CIMFlavor flavor = CIMFlavor::DEFAULTS;
        for (const std::string& f : d.flavors)
        {
            applyFlavor(flavor, f);
        }
        _repo.addQualifierDecl(_ns, CIMQualifierDecl(_name(d.name, d.line, "qualifier name"), value,
                                                     scope, flavor, d.arraySize));
        ++_qualifierCount;
    }

    void _checkClassExists(const std::string& name, int line, const std::string& usedBy,
                           const std::string& self)
    {
        if (lower(name) == lower(self))
        {
            return;
        }
        if (!_repo.classExists(_ns, _name(name, line, "class name")))
        {
            _fail(line, "class " + name + " referenced by " + usedBy + " is not defined");
        }
    }

    void _class(const mof::ClassNode& c)
    {
        CIMName className = _name(c.name, c.line, "class name");
        if (_repo.classExists(_ns, className))
        {
            _fail(c.line,
                  "class " + c.name + " is already defined in namespace " + text(_ns.getString()));
        }
        CIMName superName;
        bool superIsAssociation = false;
        bool superIsIndication = false;
        if (!c.superClass.empty())
        {
            superName = _name(c.superClass, c.line, "superclass name");
            if (!_repo.classExists(_ns, superName))
            {
                _fail(c.line,
                      "superclass " + c.superClass + " of class " + c.name + " is not defined");
            }
            CIMClass super = _repo.getClass(_ns, superName, false, true, false, CIMPropertyList());
            superIsAssociation = super.isAssociation();
            Uint32 ind = super.findQualifier(CIMName("Indication"));
            superIsIndication = ind != PEG_NOT_FOUND;
        }

        CIMClass cls(className, superName);
        Element classElement;
        classElement.scope = CIMScope::CLASS;
        classElement.description = "class " + c.name;
        classElement.isAssociation =
            superIsAssociation || _booleanQualifier(c.qualifiers, "Association");
        classElement.isIndication =
            superIsIndication || _booleanQualifier(c.qualifiers, "Indication");
        _addQualifiers(cls, c.qualifiers, classElement);

        std::set<std::string> names;
        for (const mof::FeatureNode& f : c.features)
        {
            if (!names.insert(lower(f.name)).second)
            {
                _fail(f.line, f.name + " is defined twice in class " + c.name);
            }
            CIMName name = _name(f.name, f.line, "property or method name");
            Element element;
            element.description = c.name + "." + f.name;
            if (f.kind == mof::FeatureNode::METHOD)
            {
                element.scope = CIMScope::METHOD;
                CIMMethod method(name, typeOf(f.type));
                _addQualifiers(method, f.qualifiers, element);
                std::set<std::string> paramNames;
                for (const mof::ParameterNode& p : f.parameters)
                {
                    if (!paramNames.insert(lower(p.name)).second)
                    {
                        _fail(p.line, "parameter " + p.name + " is defined twice in " +
                                          element.description);
                    }
                    CIMName refClass;
                    if (p.type == "ref")
                    {
                        _checkClassExists(p.refClass, p.line, element.description, c.name);
                        refClass = _name(p.refClass, p.line, "class name");
                    }
                    CIMParameter param(_name(p.name, p.line, "parameter name"), typeOf(p.type),
                                       p.isArray, p.arraySize, refClass);
                    Element pe;
                    pe.scope = CIMScope::PARAMETER;
                    pe.description = element.description + "(" + p.name + ")";
                    _addQualifiers(param, p.qualifiers, pe);
                    method.addParameter(param);
                }
                cls.addMethod(method);
                continue;
            }
            CIMName refClass;
            CIMType type = typeOf(f.type);
            if (f.kind == mof::FeatureNode::REFERENCE)
            {
                element.scope = CIMScope::REFERENCE;
                _checkClassExists(f.refClass, f.line, element.description, c.name);
                refClass = _name(f.refClass, f.line, "class name");
            }
            else
            {
                element.scope = CIMScope::PROPERTY;
            }
            CIMValue value = _value(f.defaultValue, type, f.isArray, f.arraySize);
            CIMProperty property(name, value, f.arraySize, refClass);
            _addQualifiers(property, f.qualifiers, element);
            cls.addProperty(property);
        }
        _repo.addClass(_ns, cls);
        ++_classCount;
    }

    void _instance(const mof::InstanceNode& i)
    {
        CIMName className = _name(i.className, i.line, "class name");
        if (!_repo.classExists(_ns, className))
        {
            _fail(i.line, "class " + i.className + " of the instance is not defined in namespace " +
                              text(_ns.getString()));
        }
        CIMClass cls = _repo.getClass(_ns, className, false, true, true, CIMPropertyList());
        CIMInstance instance(cls.getClassName());
        std::set<std::string> given;
        for (const mof::PropertyValueNode& v : i.values)
        {
            Uint32 pos = cls.findProperty(_name(v.name, v.line, "property name"));
            if (pos == PEG_NOT_FOUND)
            {
                _fail(v.line, "class " + i.className + " has no property " + v.name);
            }
            if (!given.insert(lower(v.name)).second)
            {
                _fail(v.line, "property " + v.name + " is set twice");
            }
            CIMProperty decl = cls.getProperty(pos);
            CIMValue value = _value(v.value, decl.getType(), decl.isArray(), decl.getArraySize());
            instance.addProperty(CIMProperty(decl.getName(), value, decl.getArraySize(),
                                             decl.getReferenceClassName(), decl.getClassOrigin(),
                                             false));
        }
        // Properties left out take the class's default, as far as it has one.
        bool keysComplete = true;
        for (Uint32 k = 0; k < cls.getPropertyCount(); ++k)
        {
            CIMProperty decl = cls.getProperty(k);
            bool isKey = false;
            Uint32 q = decl.findQualifier(CIMName("Key"));
            if (q != PEG_NOT_FOUND)
            {
                const CIMValue& kv = decl.getQualifier(q).getValue();
                Boolean b = false;
                if (!kv.isNull() && kv.getType() == CIMTYPE_BOOLEAN && !kv.isArray())
                {
                    kv.get(b);
                }
                isKey = b;
            }
            bool set = given.count(lower(text(decl.getName().getString()))) > 0;
            if (!set && !decl.getValue().isNull())
            {
                instance.addProperty(CIMProperty(decl.getName(), decl.getValue(),
                                                 decl.getArraySize(), decl.getReferenceClassName(),
                                                 decl.getClassOrigin(), true));
                set = true;
            }
            if (isKey)
            {
                Uint32 ip = instance.findProperty(decl.getName());
                keysComplete = keysComplete && set && ip != PEG_NOT_FOUND &&
                               !instance.getProperty(ip).getValue().isNull();
            }
        }
        CIMObjectPath path;
        if (keysComplete && cls.hasKeys())
        {
            path = instance.buildPath(cls);
        }
        else
        {
            path.setClassName(cls.getClassName());
        }
        path.setNameSpace(_ns);
        instance.setPath(path);
        if (!i.alias.empty())
        {
            std::string key = lower(i.alias);
            if (_aliases.count(key))
            {
                _fail(i.line, "alias $" + i.alias + " is already defined");
            }
            _aliases[key] = path;
        }
        MofInstance out;
        out.nameSpace = _ns;
        out.instance = instance;
        out.file = _file;
        out.line = i.line;
        _instances.push_back(out);
    }

    ClassRepository& _repo;
    std::vector<MofInstance>& _instances;
    std::map<std::string, CIMObjectPath>& _aliases;
    std::string _file;
    CIMNamespaceName _ns;
    std::size_t& _classCount;
    std::size_t& _qualifierCount;
};

} // namespace

MofCompiler::MofCompiler(ClassRepository& repository) : _repository(repository) {}

void MofCompiler::compileFile(const std::string& path, const CIMNamespaceName& defaultNs)
{
    std::string content;
    if (!readFile(path, content))
    {
        throw MofError(path, 0, "cannot open the file");
    }
    _compile(content, path, defaultNs, 0);
}

void MofCompiler::compileString(const std::string& text, const std::string& sourceName,
                                const CIMNamespaceName& defaultNs)
{
    _compile(text, sourceName, defaultNs, 0);
}

void MofCompiler::_compile(const std::string& content, const std::string& sourceName,
                           const CIMNamespaceName& ns, int depth)
{
    try
    {
        _repository.createNamespace(ns);
    }
    catch (Exception& e)
    {
        throw MofError(sourceName, 0, text(e.getMessage()));
    }
    std::vector<mof::Production> productions = mof::parseMof(content, sourceName);
    Unit unit(_repository, _instances, _aliases, sourceName, ns, _classCount, _qualifierDeclCount);
    unit.run(productions,
             [&](const std::string& file, int line, const CIMNamespaceName& current)
             {
                 if (depth + 1 >= maxIncludeDepth)
                 {
                     throw MofError(sourceName, line,
                                    "includes nested too deeply (does a file include itself?)");
                 }
                 std::string path =
                     !file.empty() && file[0] == '/' ? file : directoryOf(sourceName) + file;
                 std::string included;
                 if (!readFile(path, included))
                 {
                     throw MofError(sourceName, line, "cannot open included file '" + path + "'");
                 }
                 _compile(included, path, current, depth + 1);
             });
}

} // namespace cimrepo
