#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <cstdarg>
#include <cstdio>
#include <atomic>
#include <cstring>
#include <new>
#include <type_traits>
#include <variant>

PEGASUS_NAMESPACE_BEGIN

// Arrays, and scalars of the types not held in place (as one-element
// arrays); the variant's index is the CIMType.
typedef std::variant<Array<Boolean>, Array<Uint8>, Array<Sint8>, Array<Uint16>, Array<Sint16>,
                     Array<Uint32>, Array<Sint32>, Array<Uint64>, Array<Sint64>, Array<Real32>,
                     Array<Real64>, Array<Char16>, Array<String>, Array<CIMDateTime>,
                     Array<CIMObjectPath>, Array<CIMObject>, Array<CIMInstance>>
    CIMValueData;

struct CIMValueRep
{
    std::atomic<Uint32> refs{1};
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

// Everything that reads or writes a value's storage.
struct CIMValueAccess
{
    // Where a non-null value of type T keeps a scalar.
    template <class T> static constexpr int scalarForm()
    {
        if constexpr (std::is_same_v<T, String>)
        {
            return CIMValue::TEXT;
        }
        else if constexpr (std::is_same_v<T, CIMDateTime>)
        {
            return CIMValue::TIME;
        }
        else if constexpr (std::is_same_v<T, CIMObjectPath> || std::is_same_v<T, CIMObject> ||
                           std::is_same_v<T, CIMInstance>)
        {
            return CIMValue::SHARED;
        }
        else
        {
            return CIMValue::BITS;
        }
    }

    static void init(CIMValue& v, CIMType type = CIMTYPE_BOOLEAN, Boolean isArray = false)
    {
        v._type = Uint8(type);
        v._form = CIMValue::NOTHING;
        v._isArray = isArray;
    }

    static CIMValueRep* rep(const CIMValue& v)
    {
        CIMValueRep* r;
        memcpy(&r, v._data, sizeof(r));
        return r;
    }

    static const String& text(const CIMValue& v)
    {
        return *std::launder(reinterpret_cast<const String*>(v._data));
    }

    static_assert(sizeof(String) <= sizeof(CIMValue::_data) &&
                      sizeof(CIMDateTime) <= sizeof(CIMValue::_data),
                  "held in place");

    static const CIMDateTime& time(const CIMValue& v)
    {
        return *std::launder(reinterpret_cast<const CIMDateTime*>(v._data));
    }

    template <class T> static T bits(const CIMValue& v)
    {
        T x;
        memcpy(static_cast<void*>(&x), v._data, sizeof(T));
        return x;
    }

    // Drops what the value holds; it reads as null afterwards.
    static void release(CIMValue& v)
    {
        if (v._form == CIMValue::SHARED)
        {
            CIMValueRep* r = rep(v);
            if (r->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            {
                delete r;
            }
        }
        else if (v._form == CIMValue::TEXT)
        {
            std::launder(reinterpret_cast<String*>(v._data))->~String();
        }
        else if (v._form == CIMValue::TIME)
        {
            std::launder(reinterpret_cast<CIMDateTime*>(v._data))->~CIMDateTime();
        }
        v._form = CIMValue::NOTHING;
    }

    // v must hold nothing.
    static void copy(CIMValue& v, const CIMValue& x)
    {
        v._type = x._type;
        v._isArray = x._isArray;
        if (x._form == CIMValue::TEXT)
        {
            new (v._data) String(text(x));
        }
        else if (x._form == CIMValue::TIME)
        {
            new (v._data) CIMDateTime(time(x));
        }
        else
        {
            if (x._form == CIMValue::SHARED)
            {
                rep(x)->refs.fetch_add(1, std::memory_order_relaxed);
            }
            memcpy(v._data, x._data, sizeof(v._data));
        }
        v._form = x._form;
    }

    template <class T> static void setScalar(CIMValue& v, const T& x)
    {
        if constexpr (scalarForm<T>() == CIMValue::TEXT)
        {
            // x may be this value's own text: copy it before letting go.
            String keep(x);
            release(v);
            new (v._data) String(std::move(keep));
        }
        else if constexpr (scalarForm<T>() == CIMValue::TIME)
        {
            CIMDateTime keep(x);
            release(v);
            new (v._data) CIMDateTime(keep);
        }
        else if constexpr (scalarForm<T>() == CIMValue::SHARED)
        {
            CIMValueRep* r = new CIMValueRep;
            try
            {
                r->data.template emplace<TypeOf<T>::type>(Array<T>(1, _own(x)));
            }
            catch (...)
            {
                delete r;
                throw;
            }
            release(v);
            memcpy(v._data, &r, sizeof(r));
        }
        else
        {
            static_assert(sizeof(T) <= sizeof(v._data) && std::is_trivially_copyable_v<T>,
                          "held in place");
            release(v);
            memset(v._data, 0, sizeof(v._data));
            memcpy(v._data, static_cast<const void*>(&x), sizeof(T));
        }
        v._type = Uint8(TypeOf<T>::type);
        v._isArray = false;
        v._form = Uint8(scalarForm<T>());
    }

    template <class T> static void setArray(CIMValue& v, const Array<T>& x)
    {
        CIMValueRep* r = new CIMValueRep;
        try
        {
            r->data.template emplace<TypeOf<T>::type>(_ownAll(x));
        }
        catch (...)
        {
            delete r;
            throw;
        }
        release(v);
        memcpy(v._data, &r, sizeof(r));
        v._type = Uint8(TypeOf<T>::type);
        v._isArray = true;
        v._form = CIMValue::SHARED;
    }

    template <class T> static T scalar(const CIMValue& v)
    {
        if constexpr (scalarForm<T>() == CIMValue::TEXT)
        {
            return text(v);
        }
        else if constexpr (scalarForm<T>() == CIMValue::TIME)
        {
            return time(v);
        }
        else if constexpr (scalarForm<T>() == CIMValue::SHARED)
        {
            return _own(std::get<TypeOf<T>::type>(rep(v)->data)[0]);
        }
        else
        {
            return bits<T>(v);
        }
    }

    template <class T> static void getScalar(const CIMValue& v, T& x)
    {
        if (v._type != TypeOf<T>::type || v._isArray)
        {
            throw TypeMismatchException();
        }
        if (v._form != CIMValue::NOTHING)
        {
            x = scalar<T>(v);
        }
    }

    template <class T> static void getArray(const CIMValue& v, Array<T>& x)
    {
        if (v._type != TypeOf<T>::type || !v._isArray)
        {
            throw TypeMismatchException();
        }
        if (v._form != CIMValue::NOTHING)
        {
            x = _ownAll(std::get<TypeOf<T>::type>(rep(v)->data));
        }
    }

    // Calls f with a default T for the value's type, T being the scalar
    // type (Boolean ... CIMInstance).
    template <class F> static auto dispatch(CIMType type, F&& f)
    {
        switch (type)
        {
        case CIMTYPE_BOOLEAN:
            return f(Boolean());
        case CIMTYPE_UINT8:
            return f(Uint8());
        case CIMTYPE_SINT8:
            return f(Sint8());
        case CIMTYPE_UINT16:
            return f(Uint16());
        case CIMTYPE_SINT16:
            return f(Sint16());
        case CIMTYPE_UINT32:
            return f(Uint32());
        case CIMTYPE_SINT32:
            return f(Sint32());
        case CIMTYPE_UINT64:
            return f(Uint64());
        case CIMTYPE_SINT64:
            return f(Sint64());
        case CIMTYPE_REAL32:
            return f(Real32());
        case CIMTYPE_REAL64:
            return f(Real64());
        case CIMTYPE_CHAR16:
            return f(Char16());
        default:
            // Every other type is a class or array held in a shared rep;
            // the callers only dispatch what is held in place.
            return f(String());
        }
    }

    static Boolean equal(const CIMValue& v, const CIMValue& x)
    {
        if (v._type != x._type || v._isArray != x._isArray)
        {
            return false;
        }
        if ((v._form == CIMValue::NOTHING) != (x._form == CIMValue::NOTHING))
        {
            return false;
        }
        switch (v._form)
        {
        case CIMValue::NOTHING:
            return true;
        case CIMValue::TEXT:
            return String::equal(text(v), text(x));
        case CIMValue::TIME:
            return _elementEqual(time(v), time(x));
        case CIMValue::BITS:
            return dispatch(CIMType(v._type),
                            [&](auto t)
                            {
                                using T = decltype(t);
                                return _elementEqual(scalar<T>(v), scalar<T>(x));
                            });
        default:
            return std::visit(
                [&x](const auto& a)
                {
                    using A = std::decay_t<decltype(a)>;
                    return _arraysEqual(a, std::get<A>(rep(x)->data));
                },
                rep(v)->data);
        }
    }

    static String toString(const CIMValue& v)
    {
        switch (v._form)
        {
        case CIMValue::NOTHING:
            return String();
        case CIMValue::TEXT:
            return text(v);
        case CIMValue::TIME:
            return _text(time(v));
        case CIMValue::BITS:
            return dispatch(CIMType(v._type),
                            [&](auto t) { return _text(scalar<decltype(t)>(v)); });
        default:
            break;
        }
        Boolean array = v._isArray;
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
            rep(v)->data);
    }
};

CIMValue::CIMValue()
{
    CIMValueAccess::init(*this);
}

CIMValue::CIMValue(CIMType type, Boolean isArray, Uint32 arraySize)
{
    CIMValueAccess::init(*this);
    setNullValue(type, isArray, arraySize);
}

#define ORV_SDK_VALUE_OVERLOADS(T, P)                                                              \
    CIMValue::CIMValue(P x)                                                                        \
    {                                                                                              \
        CIMValueAccess::init(*this);                                                               \
        CIMValueAccess::setScalar<T>(*this, x);                                                    \
    }                                                                                              \
    CIMValue::CIMValue(const Array<T>& x)                                                          \
    {                                                                                              \
        CIMValueAccess::init(*this);                                                               \
        CIMValueAccess::setArray(*this, x);                                                        \
    }                                                                                              \
    void CIMValue::set(P x)                                                                        \
    {                                                                                              \
        CIMValueAccess::setScalar<T>(*this, x);                                                    \
    }                                                                                              \
    void CIMValue::set(const Array<T>& x)                                                          \
    {                                                                                              \
        CIMValueAccess::setArray(*this, x);                                                        \
    }                                                                                              \
    void CIMValue::get(T& x) const                                                                 \
    {                                                                                              \
        CIMValueAccess::getScalar(*this, x);                                                       \
    }                                                                                              \
    void CIMValue::get(Array<T>& x) const                                                          \
    {                                                                                              \
        CIMValueAccess::getArray(*this, x);                                                        \
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

CIMValue::CIMValue(const CIMValue& x)
{
    CIMValueAccess::init(*this);
    CIMValueAccess::copy(*this, x);
}

CIMValue::~CIMValue()
{
    CIMValueAccess::release(*this);
}

CIMValue& CIMValue::operator=(const CIMValue& x)
{
    if (this != &x)
    {
        CIMValueAccess::release(*this);
        CIMValueAccess::copy(*this, x);
    }
    return *this;
}

void CIMValue::assign(const CIMValue& x)
{
    *this = x;
}

void CIMValue::clear()
{
    CIMValueAccess::release(*this);
    CIMValueAccess::init(*this);
}

Boolean CIMValue::typeCompatible(const CIMValue& x) const
{
    return _type == x._type && _isArray == x._isArray;
}

Boolean CIMValue::isArray() const
{
    return _isArray;
}

Boolean CIMValue::isNull() const
{
    return _form == NOTHING;
}

Uint32 CIMValue::getArraySize() const
{
    if (!_isArray || _form == NOTHING)
    {
        return 0;
    }
    return std::visit([](const auto& a) { return a.size(); }, CIMValueAccess::rep(*this)->data);
}

CIMType CIMValue::getType() const
{
    return CIMType(_type);
}

void CIMValue::setNullValue(CIMType type, Boolean isArray, Uint32 /*arraySize*/)
{
    if (unsigned(type) >= std::variant_size_v<CIMValueData>)
    {
        throw TypeMismatchException();
    }
    CIMValueAccess::release(*this);
    CIMValueAccess::init(*this, type, isArray);
}

Boolean CIMValue::equal(const CIMValue& x) const
{
    return CIMValueAccess::equal(*this, x);
}

String CIMValue::toString() const
{
    return CIMValueAccess::toString(*this);
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
