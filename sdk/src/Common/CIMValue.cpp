#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <cstdarg>
#include <cstdio>
#include <variant>

PEGASUS_NAMESPACE_BEGIN

// Scalars are kept as one-element arrays so that every type has a single
// storage; the variant's index is the CIMType.
typedef std::variant<Array<Boolean>, Array<Uint8>, Array<Sint8>, Array<Uint16>, Array<Sint16>,
                     Array<Uint32>, Array<Sint32>, Array<Uint64>, Array<Sint64>, Array<Real32>,
                     Array<Real64>, Array<Char16>, Array<String>, Array<CIMDateTime>,
                     Array<CIMObjectPath>, Array<CIMObject>, Array<CIMInstance>>
    CIMValueData;

struct CIMValueRep
{
    CIMType type = CIMTYPE_BOOLEAN;
    Boolean isArray = false;
    Boolean isNull = true;
    CIMValueData data;
};

namespace
{

template <class T> struct TypeOf;
#define ORV_SDK_TYPE_OF(T, TYPE)                                                                   \
    template <> struct TypeOf<T>                                                                   \
    {                                                                                              \
        static const CIMType type = TYPE;                                                          \
    };
ORV_SDK_TYPE_OF(Boolean, CIMTYPE_BOOLEAN)
ORV_SDK_TYPE_OF(Uint8, CIMTYPE_UINT8)
ORV_SDK_TYPE_OF(Sint8, CIMTYPE_SINT8)
ORV_SDK_TYPE_OF(Uint16, CIMTYPE_UINT16)
ORV_SDK_TYPE_OF(Sint16, CIMTYPE_SINT16)
ORV_SDK_TYPE_OF(Uint32, CIMTYPE_UINT32)
ORV_SDK_TYPE_OF(Sint32, CIMTYPE_SINT32)
ORV_SDK_TYPE_OF(Uint64, CIMTYPE_UINT64)
ORV_SDK_TYPE_OF(Sint64, CIMTYPE_SINT64)
ORV_SDK_TYPE_OF(Real32, CIMTYPE_REAL32)
ORV_SDK_TYPE_OF(Real64, CIMTYPE_REAL64)
ORV_SDK_TYPE_OF(Char16, CIMTYPE_CHAR16)
ORV_SDK_TYPE_OF(String, CIMTYPE_STRING)
ORV_SDK_TYPE_OF(CIMDateTime, CIMTYPE_DATETIME)
ORV_SDK_TYPE_OF(CIMObjectPath, CIMTYPE_REFERENCE)
ORV_SDK_TYPE_OF(CIMObject, CIMTYPE_OBJECT)
ORV_SDK_TYPE_OF(CIMInstance, CIMTYPE_INSTANCE)
#undef ORV_SDK_TYPE_OF

// Embedded objects are copied deeply so that a value never shares them
// with its caller; everything else copies as usual.
template <class T> T _own(const T& x)
{
    return x;
}

CIMObject _own(const CIMObject& x)
{
    if (x.isUninitialized())
    {
        throw UninitializedObjectException();
    }
    return x.clone();
}

CIMInstance _own(const CIMInstance& x)
{
    if (x.isUninitialized())
    {
        throw UninitializedObjectException();
    }
    return x.clone();
}

template <class T> Array<T> _ownAll(const Array<T>& x)
{
    return x;
}

template <class T> Array<T> _ownEach(const Array<T>& x)
{
    Array<T> result;
    result.reserveCapacity(x.size());
    for (Uint32 i = 0; i < x.size(); i++)
    {
        result.append(_own(x[i]));
    }
    return result;
}

Array<CIMObject> _ownAll(const Array<CIMObject>& x)
{
    return _ownEach(x);
}

Array<CIMInstance> _ownAll(const Array<CIMInstance>& x)
{
    return _ownEach(x);
}

template <class T> std::shared_ptr<const CIMValueRep> _makeScalar(const T& x)
{
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = TypeOf<T>::type;
    rep->isArray = false;
    rep->isNull = false;
    rep->data.emplace<TypeOf<T>::type>(Array<T>(1, _own(x)));
    return rep;
}

template <class T> std::shared_ptr<const CIMValueRep> _makeArray(const Array<T>& x)
{
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = TypeOf<T>::type;
    rep->isArray = true;
    rep->isNull = false;
    rep->data.emplace<TypeOf<T>::type>(_ownAll(x));
    return rep;
}

template <class T> void _getScalar(const CIMValueRep& rep, T& x)
{
    if (rep.type != TypeOf<T>::type || rep.isArray)
    {
        throw TypeMismatchException();
    }
    if (!rep.isNull)
    {
        x = _own(std::get<TypeOf<T>::type>(rep.data)[0]);
    }
}

template <class T> void _getArray(const CIMValueRep& rep, Array<T>& x)
{
    if (rep.type != TypeOf<T>::type || !rep.isArray)
    {
        throw TypeMismatchException();
    }
    if (!rep.isNull)
    {
        x = _ownAll(std::get<TypeOf<T>::type>(rep.data));
    }
}

template <size_t I> void _emplaceEmpty(CIMValueData& data, size_t index)
{
    if constexpr (I < std::variant_size_v<CIMValueData>)
    {
        if (index == I)
        {
            data.emplace<I>();
        }
        else
        {
            _emplaceEmpty<I + 1>(data, index);
        }
    }
}

Boolean _elementEqual(const Char16& x, const Char16& y)
{
    return Uint16(x) == Uint16(y);
}

Boolean _elementEqual(const CIMDateTime& x, const CIMDateTime& y)
{
    return x.equal(y);
}

Boolean _elementEqual(const CIMObjectPath& x, const CIMObjectPath& y)
{
    return x.identical(y);
}

Boolean _elementEqual(const CIMObject& x, const CIMObject& y)
{
    return x.identical(y);
}

Boolean _elementEqual(const CIMInstance& x, const CIMInstance& y)
{
    return x.identical(y);
}

template <class T> Boolean _elementEqual(const T& x, const T& y)
{
    return x == y;
}

template <class T> Boolean _arraysEqual(const Array<T>& x, const Array<T>& y)
{
    if (x.size() != y.size())
    {
        return false;
    }
    for (Uint32 i = 0; i < x.size(); i++)
    {
        if (!_elementEqual(x[i], y[i]))
        {
            return false;
        }
    }
    return true;
}

String _print(const char* format, ...) __attribute__((format(printf, 1, 2)));

String _print(const char* format, ...)
{
    char buffer[64];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof(buffer), format, args);
    va_end(args);
    return String(buffer);
}

String _text(Boolean x)
{
    return String(x ? "TRUE" : "FALSE");
}

String _text(Uint8 x)
{
    return _print("%u", unsigned(x));
}

String _text(Sint8 x)
{
    return _print("%d", int(x));
}

String _text(Uint16 x)
{
    return _print("%u", unsigned(x));
}

String _text(Sint16 x)
{
    return _print("%d", int(x));
}

String _text(Uint32 x)
{
    return _print("%u", x);
}

String _text(Sint32 x)
{
    return _print("%d", x);
}

String _text(Uint64 x)
{
    return _print("%llu", x);
}

String _text(Sint64 x)
{
    return _print("%lld", x);
}

String _text(Real32 x)
{
    return _print("%.7e", double(x));
}

String _text(Real64 x)
{
    return _print("%.16e", x);
}

String _text(const Char16& x)
{
    return String(&x, 1);
}

String _text(const String& x)
{
    return x;
}

String _text(const CIMDateTime& x)
{
    return x.toString();
}

String _text(const CIMObjectPath& x)
{
    return x.toString();
}

String _text(const CIMObject& x)
{
    return x.toString();
}

String _text(const CIMInstance& x)
{
    return CIMObject(x).toString();
}

} // namespace

CIMValue::CIMValue() : _rep(std::make_shared<CIMValueRep>()) {}

CIMValue::CIMValue(CIMType type, Boolean isArray, Uint32 arraySize)
{
    setNullValue(type, isArray, arraySize);
}

#define ORV_SDK_VALUE_OVERLOADS(T, P)                                                              \
    CIMValue::CIMValue(P x) : _rep(_makeScalar(x)) {}                                              \
    CIMValue::CIMValue(const Array<T>& x) : _rep(_makeArray(x)) {}                                 \
    void CIMValue::set(P x)                                                                        \
    {                                                                                              \
        _rep = _makeScalar(x);                                                                     \
    }                                                                                              \
    void CIMValue::set(const Array<T>& x)                                                          \
    {                                                                                              \
        _rep = _makeArray(x);                                                                      \
    }                                                                                              \
    void CIMValue::get(T& x) const                                                                 \
    {                                                                                              \
        _getScalar(*_rep, x);                                                                      \
    }                                                                                              \
    void CIMValue::get(Array<T>& x) const                                                          \
    {                                                                                              \
        _getArray(*_rep, x);                                                                       \
    }

ORV_SDK_VALUE_OVERLOADS(Boolean, Boolean)
ORV_SDK_VALUE_OVERLOADS(Uint8, Uint8)
ORV_SDK_VALUE_OVERLOADS(Sint8, Sint8)
ORV_SDK_VALUE_OVERLOADS(Uint16, Uint16)
ORV_SDK_VALUE_OVERLOADS(Sint16, Sint16)
ORV_SDK_VALUE_OVERLOADS(Uint32, Uint32)
ORV_SDK_VALUE_OVERLOADS(Sint32, Sint32)
ORV_SDK_VALUE_OVERLOADS(Uint64, Uint64)
ORV_SDK_VALUE_OVERLOADS(Sint64, Sint64)
ORV_SDK_VALUE_OVERLOADS(Real32, Real32)
ORV_SDK_VALUE_OVERLOADS(Real64, Real64)
ORV_SDK_VALUE_OVERLOADS(Char16, const Char16&)
ORV_SDK_VALUE_OVERLOADS(String, const String&)
ORV_SDK_VALUE_OVERLOADS(CIMDateTime, const CIMDateTime&)
ORV_SDK_VALUE_OVERLOADS(CIMObjectPath, const CIMObjectPath&)
ORV_SDK_VALUE_OVERLOADS(CIMObject, const CIMObject&)
ORV_SDK_VALUE_OVERLOADS(CIMInstance, const CIMInstance&)
#undef ORV_SDK_VALUE_OVERLOADS

CIMValue::CIMValue(const CIMValue& x) = default;

CIMValue::~CIMValue() {}

CIMValue& CIMValue::operator=(const CIMValue& x) = default;

void CIMValue::assign(const CIMValue& x)
{
    _rep = x._rep;
}

void CIMValue::clear()
{
    _rep = std::make_shared<CIMValueRep>();
}

Boolean CIMValue::typeCompatible(const CIMValue& x) const
{
    return _rep->type == x._rep->type && _rep->isArray == x._rep->isArray;
}

Boolean CIMValue::isArray() const
{
    return _rep->isArray;
}

Boolean CIMValue::isNull() const
{
    return _rep->isNull;
}

Uint32 CIMValue::getArraySize() const
{
    if (!_rep->isArray || _rep->isNull)
    {
        return 0;
    }
    return std::visit([](const auto& a) { return a.size(); }, _rep->data);
}

CIMType CIMValue::getType() const
{
    return _rep->type;
}

void CIMValue::setNullValue(CIMType type, Boolean isArray, Uint32 /*arraySize*/)
{
    if (unsigned(type) >= std::variant_size_v<CIMValueData>)
    {
        throw TypeMismatchException();
    }
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = type;
    rep->isArray = isArray;
    rep->isNull = true;
    _emplaceEmpty<0>(rep->data, size_t(type));
    _rep = rep;
}

Boolean CIMValue::equal(const CIMValue& x) const
{
    if (!typeCompatible(x) || _rep->isNull != x._rep->isNull)
    {
        return false;
    }
    if (_rep->isNull)
    {
        return true;
    }
    return std::visit(
        [&x](const auto& a)
        {
            using A = std::decay_t<decltype(a)>;
            return _arraysEqual(a, std::get<A>(x._rep->data));
        },
        _rep->data);
}

String CIMValue::toString() const
{
    if (_rep->isNull)
    {
        return String();
    }
    Boolean array = _rep->isArray;
    return std::visit(
        [array](const auto& a)
        {
            String out;
            for (Uint32 i = 0; i < a.size(); i++)
            {
                out.append(_text(a[i]));
                if (array)
                {
                    out.append(Char16(' '));
                }
            }
            return out;
        },
        _rep->data);
}

Boolean operator==(const CIMValue& x, const CIMValue& y)
{
    return x.equal(y);
}

Boolean operator!=(const CIMValue& x, const CIMValue& y)
{
    return !x.equal(y);
}

PEGASUS_NAMESPACE_END
