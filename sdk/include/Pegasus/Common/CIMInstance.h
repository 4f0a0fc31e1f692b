#ifndef Pegasus_CIMInstance_h
#define Pegasus_CIMInstance_h

#include <memory>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMQualifier.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstClass;
class CIMConstInstance;
class CIMObjectRep;
struct SdkRepAccess;

// An instance of a CIM class. Copies share one representation; clone() deep-copies.
// Property and qualifier names are found without regard to case.
class PEGASUS_COMMON_LINKAGE CIMInstance
{
public:
    CIMInstance();
    CIMInstance(const CIMInstance& x);
    explicit CIMInstance(const CIMObject& x);
    CIMInstance(const CIMName& className);
    ~CIMInstance();
    CIMInstance& operator=(const CIMInstance& x);

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    void setPath(const CIMObjectPath& path);

    CIMInstance& addQualifier(const CIMQualifier& qualifier);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    // Throws AlreadyExistsException when a property of that name is present.
    CIMInstance& addProperty(const CIMProperty& x);
    Uint32 findProperty(const CIMName& name) const;
    CIMProperty getProperty(Uint32 index);
    CIMConstProperty getProperty(Uint32 index) const;
    void removeProperty(Uint32 index);
    Uint32 getPropertyCount() const;

    // The path of this instance from the Key properties that cimClass declares.
    CIMObjectPath buildPath(const CIMConstClass& cimClass) const;

    CIMInstance clone() const;
    Boolean identical(const CIMConstInstance& x) const;
    Boolean isUninitialized() const;

    // Drops qualifiers, class origins and properties not in propertyList (null list keeps all).
    void filter(Boolean includeQualifiers, Boolean includeClassOrigin,
                const CIMPropertyList& propertyList);
    // The current name of filter().
    void instanceFilter(Boolean includeQualifiers, Boolean includeClassOrigin,
                        const CIMPropertyList& propertyList);

private:
    std::shared_ptr<CIMObjectRep> _rep;

    friend class CIMObject;
    friend class CIMConstObject;
    friend class CIMConstInstance;
    friend class CIMClass;
    friend struct SdkRepAccess;
};

class PEGASUS_COMMON_LINKAGE CIMConstInstance
{
public:
    CIMConstInstance();
    CIMConstInstance(const CIMConstInstance& x);
    CIMConstInstance(const CIMInstance& x);
    explicit CIMConstInstance(const CIMObject& x);
    explicit CIMConstInstance(const CIMConstObject& x);
    CIMConstInstance(const CIMName& className);
    ~CIMConstInstance();
    CIMConstInstance& operator=(const CIMConstInstance& x);
    CIMConstInstance& operator=(const CIMInstance& x);

    const CIMName& getClassName() const;
    const CIMObjectPath& getPath() const;
    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;
    Uint32 findProperty(const CIMName& name) const;
    CIMConstProperty getProperty(Uint32 index) const;
    Uint32 getPropertyCount() const;
    CIMObjectPath buildPath(const CIMConstClass& cimClass) const;
    CIMInstance clone() const;
    Boolean identical(const CIMConstInstance& x) const;
    Boolean isUninitialized() const;

private:
    std::shared_ptr<CIMObjectRep> _rep;

    friend class CIMInstance;
    friend class CIMObject;
    friend class CIMConstObject;
    friend struct SdkRepAccess;
};

PEGASUS_NAMESPACE_END

#endif
