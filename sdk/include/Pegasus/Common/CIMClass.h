#ifndef Pegasus_CIMClass_h
#define Pegasus_CIMClass_h

#include <memory>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMQualifier.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstClass;
class CIMObjectRep;
struct SdkRepAccess;

// A class definition. Copies share one representation; clone() deep-copies.
class PEGASUS_COMMON_LINKAGE CIMClass
{
public:
    CIMClass();
    CIMClass(const CIMClass& x);
    explicit CIMClass(const CIMObject& x);
    CIMClass(const CIMName& className, const CIMName& superClassName = CIMName());
    ~CIMClass();
    CIMClass& operator=(const CIMClass& x);

    // True when the class carries the Association (resp. Abstract) qualifier with value true.
    Boolean isAssociation() const;
    Boolean isAbstract() const;

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    void setPath(const CIMObjectPath& path);
    const CIMName& getSuperClassName() const;
    void setSuperClassName(const CIMName& superClassName);

    CIMClass& addQualifier(const CIMQualifier& qualifier);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    CIMClass& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    CIMClass& addMethod(const CIMMethod& x);
    Uint32 findMethod(const CIMName& name) const;
    CIMMethod getMethod(Uint32 index);
    CIMConstMethod getMethod(Uint32 index) const;
    void removeMethod(Uint32 index);
    Uint32 getMethodCount() const;

    // Names of the properties qualified Key, in declaration order.
    void getKeyNames(Array<CIMName>& keyNames) const;
    Boolean hasKeys() const;

    CIMClass clone() const;
    Boolean identical(const CIMConstClass& x) const;
    Boolean isUninitialized() const;

    // A new instance holding the class's properties with their default values.
    // A null propertyList keeps every property, an empty one keeps none.
    CIMInstance buildInstance(Boolean includeQualifiers, Boolean includeClassOrigin,
                              const CIMPropertyList& propertyList) const;

private:
    std::shared_ptr<CIMObjectRep> _rep;

    friend class CIMConstClass;
    friend class CIMObject;
    friend class CIMConstObject;
    friend struct SdkRepAccess;
};

class PEGASUS_COMMON_LINKAGE CIMConstClass
{
public:
    CIMConstClass();
    CIMConstClass(const CIMConstClass& x);
    CIMConstClass(const CIMClass& x);
    explicit CIMConstClass(const CIMObject& x);
    explicit CIMConstClass(const CIMConstObject& x);
    CIMConstClass(const CIMName& className, const CIMName& superClassName = CIMName());
    ~CIMConstClass();
    CIMConstClass& operator=(const CIMConstClass& x);
    CIMConstClass& operator=(const CIMClass& x);

    Boolean isAssociation() const;
    Boolean isAbstract() const;
    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    const CIMName& getSuperClassName() const;
    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;
    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;
    Uint32 findMethod(const CIMName& name) const;
    CIMConstMethod getMethod(Uint32 index) const;
    Uint32 getMethodCount() const;
    void getKeyNames(Array<CIMName>& keyNames) const;
    Boolean hasKeys() const;
    CIMClass clone() const;
    Boolean identical(const CIMConstClass& x) const;
    Boolean isUninitialized() const;

private:
    std::shared_ptr<CIMObjectRep> _rep;

    friend class CIMClass;
    friend class CIMObject;
    friend class CIMConstObject;
    friend class CIMInstance;
    friend class CIMConstInstance;
    friend struct SdkRepAccess;
};

PEGASUS_NAMESPACE_END

#endif
