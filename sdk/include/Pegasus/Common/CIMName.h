#ifndef Pegasus_Name_h
#define Pegasus_Name_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// The name of a class, property, method, parameter or qualifier. Null when
// default-constructed; otherwise always a legal CIM identifier. Names compare
// without regard to case.
class PEGASUS_COMMON_LINKAGE CIMName
{
public:
    CIMName();
    CIMName(const CIMName& name);
    CIMName(const String& name);
    CIMName(const char* name);

    CIMName& operator=(const CIMName& name);
    CIMName& operator=(const String& name);
    CIMName& operator=(const char* name);

    const String& getString() const;
    Boolean isNull() const;
    void clear();
    Boolean equal(const CIMName& name) const;

    // A letter, '_' or a non-ASCII character, then any of those or digits.
    static Boolean legal(const String& name);

private:
    String cimName;
    friend struct SdkRepAccess;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMName& name1, const CIMName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMName& name1, const char* name2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const char* name1, const CIMName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMName& name1, const CIMName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMName& name1, const char* name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const char* name1, const CIMName& name2);

// A namespace name such as "root/orv": legal identifiers separated by '/'.
// A leading '/' is dropped. Comparison ignores case.
class PEGASUS_COMMON_LINKAGE CIMNamespaceName
{
public:
    CIMNamespaceName();
    CIMNamespaceName(const CIMNamespaceName& name);
    CIMNamespaceName(const String& name);
    CIMNamespaceName(const char* name);

    CIMNamespaceName& operator=(const CIMNamespaceName& name);
    CIMNamespaceName& operator=(const String& name);
    CIMNamespaceName& operator=(const char* name);

    const String& getString() const;
    Boolean isNull() const;
    void clear();
    Boolean equal(const CIMNamespaceName& name) const;

    static Boolean legal(const String& name);

private:
    String cimNamespaceName;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMNamespaceName& name1,
                                          const CIMNamespaceName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMNamespaceName& name1, const char* name2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const char* name1, const CIMNamespaceName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMNamespaceName& name1,
                                          const CIMNamespaceName& name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMNamespaceName& name1, const char* name2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const char* name1, const CIMNamespaceName& name2);

PEGASUS_NAMESPACE_END

#endif
