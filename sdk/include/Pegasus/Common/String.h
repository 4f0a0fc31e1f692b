#ifndef Pegasus_String_h
#define Pegasus_String_h

#include <Pegasus/Common/Char16.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

#include <iosfwd>

PEGASUS_NAMESPACE_BEGIN

class String;
struct StringRep;

// A NUL-terminated UTF-8 copy of a String, owned by this object.
class PEGASUS_COMMON_LINKAGE CString
{
public:
    CString();
    CString(const CString& cstr);
    ~CString();
    CString& operator=(const CString& cstr);
    operator const char*() const;

private:
    explicit CString(char* cstr);
    char* _rep;
    friend class String;
};

// UTF-16 text. Indexes and sizes count UTF-16 code units; char* input and
// getCString() output are UTF-8. Copies share the text until one of them
// changes it, so names and values copy without allocating.
class PEGASUS_COMMON_LINKAGE String
{
public:
    static const String EMPTY;

    String();
    String(const String& str);
    String(String&& str) noexcept;
    String(const String& str, Uint32 n);
    String(const Char16* str);
    String(const Char16* str, Uint32 n);
    String(const char* str);
    String(const char* str, Uint32 n);
    String(const String& s1, const String& s2);
    String(const String& s1, const char* s2);
    String(const char* s1, const String& s2);
    ~String();

    String& operator=(const String& str);
    String& operator=(String&& str) noexcept;

    String& assign(const String& str);
    String& assign(const Char16* str);
    String& assign(const Char16* str, Uint32 n);
    String& assign(const char* str);
    String& assign(const char* str, Uint32 n);

    void clear();
    void reserveCapacity(Uint32 capacity);
    Uint32 size() const;
    const Char16* getChar16Data() const;
    CString getCString() const;

    // Out-of-range indexes throw IndexOutOfBoundsException.
    Char16& operator[](Uint32 index);
    const Char16 operator[](Uint32 index) const;

    String& append(const Char16& c);
    String& append(const char* str, Uint32 size);
    String& append(const Char16* str, Uint32 n);
    String& append(const String& str);
    String& operator+=(const String& str);
    String& operator+=(Char16 c);
    String& operator+=(char c);

    // Removes size code units from index on (all the rest by default).
    void remove(Uint32 index, Uint32 size = PEG_NOT_FOUND);
    String subString(Uint32 index, Uint32 n = PEG_NOT_FOUND) const;

    Uint32 find(Char16 c) const;
    Uint32 find(Uint32 index, Char16 c) const;
    Uint32 find(const String& s) const;
    Uint32 find(Uint32 index, const String& s) const;
    Uint32 reverseFind(Char16 c) const;

    void toLower();
    void toUpper();

    // Appends the printf-formatted text (UTF-8, as for char* input).
    PEGASUS_FORMAT(2, 3)
    void appendPrintf(const char* format, ...);

    static int compare(const String& s1, const String& s2, Uint32 n);
    static int compare(const String& s1, const String& s2);
    static int compareNoCase(const String& s1, const String& s2);
    static Boolean equal(const String& s1, const String& s2);
    static Boolean equalNoCase(const String& s1, const String& s2);

private:
    void _setUtf8(const char* str, size_t n);
    // Makes the text this string's own, with room for at least capacity
    // code units.
    void _unique(Uint32 capacity);
    // Null for "".
    StringRep* _rep;
    friend struct SdkRepAccess;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE String operator+(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE String operator+(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE String operator+(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE std::ostream& operator<<(std::ostream& os, const String& str);

PEGASUS_NAMESPACE_END

#endif
