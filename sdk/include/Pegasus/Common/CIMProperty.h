#ifndef Pegasus_CIMProperty_h
#define Pegasus_CIMProperty_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstProperty;
class CIMPropertyRep;
struct SdkRepAccess;

// A property of a class or instance. The value's type is fixed at construction:
// setValue() with a value of another type or array-ness throws TypeMismatchException.
class PEGASUS_COMMON_LINKAGE CIMProperty
{
public:
    CIMProperty();
    CIMProperty(const CIMProperty& x);
    CIMProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize = 0,
                const CIMName& referenceClassName = CIMName(),
                const CIMName& classOrigin = CIMName(), Boolean propagated = false);
    ~CIMProperty();
    CIMProperty& operator=(const CIMProperty& x);

    const CIMName& getName() const;
    void setName(const CIMName& name);
    const CIMValue& getValue() const;
    CIMType getType() const;
    Boolean isArray() const;
    void setValue(const CIMValue& value);
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    const CIMName& getClassOrigin() const;
    void setClassOrigin(const CIMName& classOrigin);
    Boolean getPropagated() const;
    void setPropagated(Boolean propagated);

    CIMProperty& addQualifier(const CIMQualifier& x);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    Boolean identical(const CIMConstProperty& x) const;
    CIMProperty clone() const;
    Boolean isUninitialized() const;

private:
    // Counted in the representation.
    CIMPropertyRep* _rep = nullptr;

    friend class CIMConstProperty;
    friend struct SdkRepAccess;
};

class PEGASUS_COMMON_LINKAGE CIMConstProperty
{
public:
    CIMConstProperty();
    CIMConstProperty(const CIMConstProperty& x);
    CIMConstProperty(const CIMProperty& x);
    CIMConstProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize = 0,
                     const CIMName& referenceClassName = CIMName(),
                     const CIMName& classOrigin = CIMName(), Boolean propagated = false);
    ~CIMConstProperty();
    CIMConstProperty& operator=(const CIMConstProperty& x);
    CIMConstProperty& operator=(const CIMProperty& x);

    const CIMName& getName() const;
    const CIMValue& getValue() const;
    CIMType getType() const;
    Boolean isArray() const;
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    const CIMName& getClassOrigin() const;
    Boolean getPropagated() const;
    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;
    Boolean identical(const CIMConstProperty& x) const;
    CIMProperty clone() const;
    Boolean isUninitialized() const;

private:
    // Counted in the representation.
    CIMPropertyRep* _rep = nullptr;

    friend class CIMProperty;
    friend struct SdkRepAccess;
};

PEGASUS_NAMESPACE_END

#endif
