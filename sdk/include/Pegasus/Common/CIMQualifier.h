#ifndef Pegasus_CIMQualifier_h
#define Pegasus_CIMQualifier_h

#include <memory>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstQualifier;
class CIMQualifierRep;
struct SdkRepAccess;

// A qualifier value attached to a class, instance, property, method or parameter.
// Copies share one representation; clone() makes an independent copy.
class PEGASUS_COMMON_LINKAGE CIMQualifier
{
public:
    CIMQualifier();
    CIMQualifier(const CIMQualifier& x);
    CIMQualifier(const CIMName& name, const CIMValue& value,
                 const CIMFlavor& flavor = CIMFlavor(CIMFlavor::NONE), Boolean propagated = false);
    ~CIMQualifier();
    CIMQualifier& operator=(const CIMQualifier& x);

    const CIMName& getName() const;
    void setName(const CIMName& name);
    CIMType getType() const;
    Boolean isArray() const;
    const CIMValue& getValue() const;
    void setValue(const CIMValue& value);
    void setFlavor(const CIMFlavor& flavor);
    void unsetFlavor(const CIMFlavor& flavor);
    const CIMFlavor& getFlavor() const;
    Uint32 getPropagated() const;
    void setPropagated(Boolean propagated);
    Boolean isUninitialized() const;
    Boolean identical(const CIMConstQualifier& x) const;
    CIMQualifier clone() const;

private:
    std::shared_ptr<CIMQualifierRep> _rep;

    friend class CIMConstQualifier;
    friend struct SdkRepAccess;
};

// Read-only view of a qualifier; shares the representation of the qualifier it came from.
class PEGASUS_COMMON_LINKAGE CIMConstQualifier
{
public:
    CIMConstQualifier();
    CIMConstQualifier(const CIMConstQualifier& x);
    CIMConstQualifier(const CIMQualifier& x);
    CIMConstQualifier(const CIMName& name, const CIMValue& value,
                      const CIMFlavor& flavor = CIMFlavor(CIMFlavor::NONE),
                      Boolean propagated = false);
    ~CIMConstQualifier();
    CIMConstQualifier& operator=(const CIMConstQualifier& x);
    CIMConstQualifier& operator=(const CIMQualifier& x);

    const CIMName& getName() const;
    CIMType getType() const;
    Boolean isArray() const;
    const CIMValue& getValue() const;
    const CIMFlavor& getFlavor() const;
    Uint32 getPropagated() const;
    Boolean isUninitialized() const;
    Boolean identical(const CIMConstQualifier& x) const;
    CIMQualifier clone() const;

private:
    std::shared_ptr<CIMQualifierRep> _rep;

    friend class CIMQualifier;
    friend struct SdkRepAccess;
};

PEGASUS_NAMESPACE_END

#endif
