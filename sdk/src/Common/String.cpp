#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/String.h>

#include <Pegasus/Sdk/Utf8.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "StringRep.h"
#include <new>
#include <ostream>
#include <string>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

namespace
{

Uint16 _lower(Uint16 c)
{
    return (c >= 'A' && c <= 'Z') ? Uint16(c + ('a' - 'A')) : c;
}

Uint16 _upper(Uint16 c)
{
    return (c >= 'a' && c <= 'z') ? Uint16(c - ('a' - 'A')) : c;
}

size_t _length(const Char16* str)
{
    size_t n = 0;
    while (str[n] != 0)
    {
        n++;
    }
    return n;
}

[[noreturn]] void _throwBadUtf8(size_t index)
{
    char buffer[32];
    snprintf(buffer, sizeof(buffer), "%zu", index);
    throw Exception(String("The byte sequence starting at index ") + buffer +
                    " is not valid UTF-8 encoding");
}

// Writes the UTF-16 form of the UTF-8 text to out, which has room for n
// code units (never more than the bytes), and answers how many it wrote;
// rejects overlong forms, surrogates and truncated sequences.
size_t _decodeUtf8(Char16* out, const char* str, size_t n)
{
    const unsigned char* p = reinterpret_cast<const unsigned char*>(str);
    size_t i = 0;
    size_t o = 0;
    while (i < n)
    {
        unsigned char c = p[i];
        if (c < 0x80)
        {
            out[o++] = Char16(c);
            i++;
            continue;
        }
        size_t len;
        Uint32 code;
        Uint32 min;
        if ((c & 0xE0) == 0xC0)
        {
            len = 2;
            code = c & 0x1F;
            min = 0x80;
        }
        else if ((c & 0xF0) == 0xE0)
        {
            len = 3;
            code = c & 0x0F;
            min = 0x800;
        }
        else if ((c & 0xF8) == 0xF0)
        {
            len = 4;
            code = c & 0x07;
            min = 0x10000;
        }
        else
        {
            _throwBadUtf8(i);
        }
        if (i + len > n)
        {
            _throwBadUtf8(i);
        }
        for (size_t k = 1; k < len; k++)
        {
            if ((p[i + k] & 0xC0) != 0x80)
            {
                _throwBadUtf8(i);
            }
            code = (code << 6) | (p[i + k] & 0x3F);
        }
        if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        {
            _throwBadUtf8(i);
        }
        if (code >= 0x10000)
        {
            code -= 0x10000;
            out[o++] = Char16(Uint16(0xD800 + (code >> 10)));
            out[o++] = Char16(Uint16(0xDC00 + (code & 0x3FF)));
        }
        else
        {
            out[o++] = Char16(Uint16(code));
        }
        i += len;
    }
    return o;
}

// The code point at p[i] (a surrogate pair counts as one) and how many code
// units it takes.
inline Uint32 _codePoint(const Char16* p, size_t i, size_t n, size_t& units)
{
    Uint32 c = p[i];
    units = 1;
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && p[i + 1] >= 0xDC00 && p[i + 1] <= 0xDFFF)
    {
        units = 2;
        return 0x10000 + ((c - 0xD800) << 10) + (Uint16(p[i + 1]) - 0xDC00);
    }
    return c;
}

size_t _utf8Length(const Char16* p, size_t n)
{
    size_t length = 0;
    for (size_t i = 0; i < n;)
    {
        size_t units;
        Uint32 c = _codePoint(p, i, n, units);
        i += units;
        length += c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
    }
    return length;
}

// Writes the UTF-8 form of p[0, n) to out, which has room for
// _utf8Length(p, n) bytes; answers the end of what it wrote.
char* _encodeUtf8(char* out, const Char16* p, size_t n)
{
    for (size_t i = 0; i < n;)
    {
        size_t units;
        Uint32 c = _codePoint(p, i, n, units);
        i += units;
        if (c < 0x80)
        {
            *out++ = char(c);
        }
        else if (c < 0x800)
        {
            *out++ = char(0xC0 | (c >> 6));
            *out++ = char(0x80 | (c & 0x3F));
        }
        else if (c < 0x10000)
        {
            *out++ = char(0xE0 | (c >> 12));
            *out++ = char(0x80 | ((c >> 6) & 0x3F));
            *out++ = char(0x80 | (c & 0x3F));
        }
        else
        {
            *out++ = char(0xF0 | (c >> 18));
            *out++ = char(0x80 | ((c >> 12) & 0x3F));
            *out++ = char(0x80 | ((c >> 6) & 0x3F));
            *out++ = char(0x80 | (c & 0x3F));
        }
    }
    return out;
}

const Char16 _emptyData[1] = {Char16()};

} // namespace

//
// CString
//

CString::CString() : _rep(nullptr) {}

CString::CString(char* cstr) : _rep(cstr) {}

CString::CString(const CString& cstr) : _rep(nullptr)
{
    if (cstr._rep)
    {
        size_t n = strlen(cstr._rep) + 1;
        _rep = new char[n];
        memcpy(_rep, cstr._rep, n);
    }
}

CString::~CString()
{
    delete[] _rep;
}

CString& CString::operator=(const CString& cstr)
{
    if (&cstr != this)
    {
        CString copy(cstr);
        std::swap(_rep, copy._rep);
    }
    return *this;
}

CString::operator const char*() const
{
    return _rep ? _rep : "";
}

//
// String
//


namespace
{

StringRep* _allocRep(Uint32 capacity)
{
    void* block = ::operator new(sizeof(StringRep) + size_t(capacity) * sizeof(Char16));
    StringRep* rep = new (block) StringRep;
    rep->refs.store(1, std::memory_order_relaxed);
    rep->size = 0;
    rep->capacity = capacity;
    rep->data[0] = Char16();
    return rep;
}

void _ref(StringRep* rep)
{
    if (rep)
    {
        rep->refs.fetch_add(1, std::memory_order_relaxed);
    }
}

void _unref(StringRep* rep)
{
    if (rep && rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        rep->~StringRep();
        ::operator delete(static_cast<void*>(rep));
    }
}

StringRep* _makeRep(const Char16* p, Uint32 n)
{
    if (n == 0)
    {
        return nullptr;
    }
    StringRep* rep = _allocRep(n);
    memcpy(rep->data, p, size_t(n) * sizeof(Char16));
    rep->data[n] = Char16();
    rep->size = n;
    return rep;
}

} // namespace

const String String::EMPTY;

String::String() : _rep(nullptr) {}

String::String(const String& str) : _rep(str._rep)
{
    _ref(_rep);
}

String::String(String&& str) noexcept : _rep(str._rep)
{
    str._rep = nullptr;
}

String::String(const String& str, Uint32 n) : _rep(nullptr)
{
    Uint32 size = str.size();
    assign(str.getChar16Data(), n < size ? n : size);
}

String::String(const Char16* str) : _rep(nullptr)
{
    assign(str);
}

String::String(const Char16* str, Uint32 n) : _rep(nullptr)
{
    assign(str, n);
}

String::String(const char* str) : _rep(nullptr)
{
    assign(str);
}

String::String(const char* str, Uint32 n) : _rep(nullptr)
{
    assign(str, n);
}

String::String(const String& s1, const String& s2) : _rep(nullptr)
{
    reserveCapacity(s1.size() + s2.size());
    append(s1);
    append(s2);
}

String::String(const String& s1, const char* s2) : String(s1)
{
    append(String(s2));
}

String::String(const char* s1, const String& s2) : String(s1)
{
    append(s2);
}

String::~String()
{
    _unref(_rep);
}

String& String::operator=(const String& str)
{
    _ref(str._rep);
    _unref(_rep);
    _rep = str._rep;
    return *this;
}

String& String::operator=(String&& str) noexcept
{
    if (this != &str)
    {
        _unref(_rep);
        _rep = str._rep;
        str._rep = nullptr;
    }
    return *this;
}

String& String::assign(const String& str)
{
    return *this = str;
}

String& String::assign(const Char16* str)
{
    if (!str)
    {
        throw NullPointer();
    }
    return assign(str, Uint32(_length(str)));
}

String& String::assign(const Char16* str, Uint32 n)
{
    if (!str && n)
    {
        throw NullPointer();
    }
    // str may point into this string's own text: copy before letting go.
    StringRep* rep = _makeRep(str, n);
    _unref(_rep);
    _rep = rep;
    return *this;
}

String& String::assign(const char* str)
{
    if (!str)
    {
        throw NullPointer();
    }
    _setUtf8(str, strlen(str));
    return *this;
}

String& String::assign(const char* str, Uint32 n)
{
    if (!str && n)
    {
        throw NullPointer();
    }
    _setUtf8(str, n);
    return *this;
}

void String::_setUtf8(const char* str, size_t n)
{
    StringRep* rep = nullptr;
    if (n)
    {
        // UTF-8 never takes fewer bytes than UTF-16 takes code units.
        rep = _allocRep(Uint32(n));
        try
        {
            rep->size = Uint32(_decodeUtf8(rep->data, str, n));
        }
        catch (...)
        {
            _unref(rep);
            throw;
        }
        rep->data[rep->size] = Char16();
    }
    _unref(_rep);
    _rep = rep;
}

void String::_unique(Uint32 capacity)
{
    Uint32 size = this->size();
    if (capacity < size)
    {
        capacity = size;
    }
    if (_rep && _rep->refs.load(std::memory_order_acquire) == 1 && _rep->capacity >= capacity)
    {
        return;
    }
    if (capacity == 0)
    {
        return;
    }
    StringRep* rep = _allocRep(capacity);
    if (size)
    {
        memcpy(rep->data, _rep->data, size_t(size) * sizeof(Char16));
    }
    rep->size = size;
    rep->data[size] = Char16();
    _unref(_rep);
    _rep = rep;
}

void String::clear()
{
    _unref(_rep);
    _rep = nullptr;
}

void String::reserveCapacity(Uint32 capacity)
{
    _unique(capacity);
}

Uint32 String::size() const
{
    return _rep ? _rep->size : 0;
}

const Char16* String::getChar16Data() const
{
    return _rep ? _rep->data : _emptyData;
}

CString String::getCString() const
{
    const Char16* p = getChar16Data();
    size_t n = size();
    char* text = new char[_utf8Length(p, n) + 1];
    *_encodeUtf8(text, p, n) = '\0';
    return CString(text);
}

Char16& String::operator[](Uint32 index)
{
    if (index >= size())
    {
        throw IndexOutOfBoundsException();
    }
    _unique(0);
    return _rep->data[index];
}

const Char16 String::operator[](Uint32 index) const
{
    if (index >= size())
    {
        throw IndexOutOfBoundsException();
    }
    return _rep->data[index];
}

String& String::append(const Char16& c)
{
    return append(&c, 1);
}

String& String::append(const char* str, Uint32 size)
{
    if (!str && size)
    {
        throw NullPointer();
    }
    if (size == 0)
    {
        return *this;
    }
    std::vector<Char16> tail(size);
    tail.resize(_decodeUtf8(tail.data(), str, size));
    return append(tail.data(), Uint32(tail.size()));
}

void String::appendPrintf(const char* format, ...)
{
    if (!format)
    {
        throw NullPointer();
    }
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    int n = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    if (n > 0)
    {
        std::vector<char> text(size_t(n) + 1);
        std::vsnprintf(text.data(), text.size(), format, again);
        append(text.data(), Uint32(n));
    }
    va_end(again);
}

String& String::append(const Char16* str, Uint32 n)
{
    if (n == 0)
    {
        return *this;
    }
    if (!str)
    {
        throw NullPointer();
    }
    Uint32 size = this->size();
    Uint32 needed = size + n;
    if (!_rep || _rep->refs.load(std::memory_order_acquire) != 1 || _rep->capacity < needed)
    {
        // Grows geometrically so that appending in a loop stays linear; str
        // may lie in the old text, which lives until the copy is made.
        Uint32 capacity = size && needed < 2 * size ? 2 * size : needed;
        StringRep* rep = _allocRep(capacity);
        if (size)
        {
            memcpy(rep->data, _rep->data, size_t(size) * sizeof(Char16));
        }
        memcpy(rep->data + size, str, size_t(n) * sizeof(Char16));
        rep->size = needed;
        rep->data[needed] = Char16();
        _unref(_rep);
        _rep = rep;
        return *this;
    }
    memmove(_rep->data + size, str, size_t(n) * sizeof(Char16));
    _rep->size = needed;
    _rep->data[needed] = Char16();
    return *this;
}

String& String::append(const String& str)
{
    if (&str == this)
    {
        String copy(str);
        return append(copy.getChar16Data(), copy.size());
    }
    if (!_rep)
    {
        return *this = str;
    }
    return append(str.getChar16Data(), str.size());
}

String& String::operator+=(const String& str)
{
    return append(str);
}

String& String::operator+=(Char16 c)
{
    return append(c);
}

String& String::operator+=(char c)
{
    return append(Char16(Uint16(static_cast<unsigned char>(c))));
}

void String::remove(Uint32 index, Uint32 size)
{
    Uint32 length = this->size();
    if (size == PEG_NOT_FOUND)
    {
        if (index > length)
        {
            throw IndexOutOfBoundsException();
        }
        size = length - index;
    }
    if (index > length || size > length - index)
    {
        throw IndexOutOfBoundsException();
    }
    if (size == 0)
    {
        return;
    }
    if (size == length)
    {
        clear();
        return;
    }
    _unique(0);
    Char16* p = _rep->data;
    memmove(p + index, p + index + size, size_t(length - index - size + 1) * sizeof(Char16));
    _rep->size = length - size;
}

String String::subString(Uint32 index, Uint32 n) const
{
    Uint32 length = size();
    if (index >= length)
    {
        return String();
    }
    if (n == PEG_NOT_FOUND || n > length - index)
    {
        n = length - index;
    }
    if (index == 0 && n == length)
    {
        return *this;
    }
    return String(getChar16Data() + index, n);
}

Uint32 String::find(Char16 c) const
{
    return find(0, c);
}

Uint32 String::find(Uint32 index, Char16 c) const
{
    const Char16* p = getChar16Data();
    for (Uint32 i = index, n = size(); i < n; i++)
    {
        if (Uint16(p[i]) == Uint16(c))
        {
            return i;
        }
    }
    return PEG_NOT_FOUND;
}

Uint32 String::find(const String& s) const
{
    return find(0, s);
}

Uint32 String::find(Uint32 index, const String& s) const
{
    Uint32 n = size();
    Uint32 m = s.size();
    if (m > n)
    {
        return PEG_NOT_FOUND;
    }
    const Char16* p = getChar16Data();
    const Char16* q = s.getChar16Data();
    for (Uint32 i = index; i + m <= n; i++)
    {
        Uint32 k = 0;
        while (k < m && Uint16(p[i + k]) == Uint16(q[k]))
        {
            k++;
        }
        if (k == m)
        {
            return i;
        }
    }
    return PEG_NOT_FOUND;
}

Uint32 String::reverseFind(Char16 c) const
{
    const Char16* p = getChar16Data();
    for (Uint32 i = size(); i > 0; i--)
    {
        if (Uint16(p[i - 1]) == Uint16(c))
        {
            return i - 1;
        }
    }
    return PEG_NOT_FOUND;
}

void String::toLower()
{
    _unique(0);
    for (Uint32 i = 0, n = size(); i < n; i++)
    {
        _rep->data[i] = _lower(_rep->data[i]);
    }
}

void String::toUpper()
{
    _unique(0);
    for (Uint32 i = 0, n = size(); i < n; i++)
    {
        _rep->data[i] = _upper(_rep->data[i]);
    }
}

int String::compare(const String& s1, const String& s2, Uint32 n)
{
    const Char16* p = s1.getChar16Data();
    const Char16* q = s2.getChar16Data();
    for (Uint32 i = 0; i < n; i++)
    {
        int d = int(Uint16(p[i])) - int(Uint16(q[i]));
        if (d != 0 || p[i] == 0)
        {
            return d;
        }
    }
    return 0;
}

int String::compare(const String& s1, const String& s2)
{
    return compare(s1, s2, PEG_NOT_FOUND);
}

int String::compareNoCase(const String& s1, const String& s2)
{
    const Char16* p = s1.getChar16Data();
    const Char16* q = s2.getChar16Data();
    for (Uint32 i = 0;; i++)
    {
        int d = int(_lower(p[i])) - int(_lower(q[i]));
        if (d != 0 || p[i] == 0)
        {
            return d;
        }
    }
}

// Copies share their text, so names taken from one declaration compare
// without a walk.
Boolean String::equal(const String& s1, const String& s2)
{
    return s1.size() == s2.size() &&
           (s1.getChar16Data() == s2.getChar16Data() || compare(s1, s2) == 0);
}

Boolean String::equalNoCase(const String& s1, const String& s2)
{
    const Uint32 n = s1.size();
    if (n != s2.size())
    {
        return false;
    }
    const Char16* p = s1.getChar16Data();
    const Char16* q = s2.getChar16Data();
    // Names are mostly spelt alike: the same bytes settle it at once.
    return p == q || memcmp(p, q, size_t(n) * sizeof(Char16)) == 0 || compareNoCase(s1, s2) == 0;
}

Boolean operator==(const String& s1, const String& s2)
{
    return String::equal(s1, s2);
}

Boolean operator==(const String& s1, const char* s2)
{
    return String::equal(s1, String(s2));
}

Boolean operator==(const char* s1, const String& s2)
{
    return String::equal(String(s1), s2);
}

Boolean operator!=(const String& s1, const String& s2)
{
    return !String::equal(s1, s2);
}

Boolean operator!=(const String& s1, const char* s2)
{
    return !(s1 == s2);
}

Boolean operator!=(const char* s1, const String& s2)
{
    return !(s1 == s2);
}

Boolean operator<(const String& s1, const String& s2)
{
    return String::compare(s1, s2) < 0;
}

Boolean operator<=(const String& s1, const String& s2)
{
    return String::compare(s1, s2) <= 0;
}

Boolean operator>(const String& s1, const String& s2)
{
    return String::compare(s1, s2) > 0;
}

Boolean operator>=(const String& s1, const String& s2)
{
    return String::compare(s1, s2) >= 0;
}

String operator+(const String& s1, const String& s2)
{
    return String(s1, s2);
}

String operator+(const String& s1, const char* s2)
{
    return String(s1, s2);
}

String operator+(const char* s1, const String& s2)
{
    return String(s1, s2);
}

namespace Sdk
{

void appendUtf8(std::string& out, const String& text)
{
    const Char16* p = text.getChar16Data();
    size_t n = text.size();
    size_t start = out.size();
    // Names and most values are ASCII: one byte per code unit, no counting.
    size_t i = 0;
    out.resize(start + n);
    char* q = &out[0] + start;
    for (; i < n && Uint16(p[i]) < 0x80; i++)
    {
        q[i] = char(Uint16(p[i]));
    }
    if (i == n)
    {
        return;
    }
    out.resize(start + i + _utf8Length(p + i, n - i));
    _encodeUtf8(&out[0] + start + i, p + i, n - i);
}

} // namespace Sdk

std::ostream& operator<<(std::ostream& os, const String& str)
{
    return os << static_cast<const char*>(str.getCString());
}

PEGASUS_NAMESPACE_END
