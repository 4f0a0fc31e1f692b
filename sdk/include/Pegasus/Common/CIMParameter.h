#ifndef Pegasus_CIMParameter_h
#define Pegasus_CIMParameter_h

#include <memory>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMType.h>

PEGASUS_NAMESPACE_BEGIN

class CIMConstParameter;
class CIMParameterRep;
struct SdkRepAccess;

// A declared parameter of a class method.
class PEGASUS_COMMON_LINKAGE CIMParameter
{
public:
    CIMParameter();
    CIMParameter(const CIMParameter& x);
    CIMParameter(const CIMName& name, CIMType type, Boolean isArray = false, Uint32 arraySize = 0,
                 const CIMName& referenceClassName = CIMName());
    ~CIMParameter();
    CIMParameter& operator=(const CIMParameter& x);

    CIMParameter& addQualifier(const CIMQualifier& x);
    Uint32 findQualifier(const CIMName& name) const;
    CIMQualifier getQualifier(Uint32 index);
    CIMConstQualifier getQualifier(Uint32 index) const;
    void removeQualifier(Uint32 index);
    Uint32 getQualifierCount() const;

    const CIMName& getName() const;
    void setName(const CIMName& name);
    Boolean isArray() const;
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    CIMType getType() const;
    Boolean isUninitialized() const;
    Boolean identical(const CIMConstParameter& x) const;
    CIMParameter clone() const;

private:
    std::shared_ptr<CIMParameterRep> _rep;

    friend class CIMConstParameter;
    friend struct SdkRepAccess;
};

class PEGASUS_COMMON_LINKAGE CIMConstParameter
{
public:
    CIMConstParameter();
    CIMConstParameter(const CIMConstParameter& x);
    CIMConstParameter(const CIMParameter& x);
    CIMConstParameter(const CIMName& name, CIMType type, Boolean isArray = false,
                      Uint32 arraySize = 0, const CIMName& referenceClassName = CIMName());
    ~CIMConstParameter();
    CIMConstParameter& operator=(const CIMConstParameter& x);
    CIMConstParameter& operator=(const CIMParameter& x);

    Uint32 findQualifier(const CIMName& name) const;
    CIMConstQualifier getQualifier(Uint32 index) const;
    Uint32 getQualifierCount() const;
    const CIMName& getName() const;
    Boolean isArray() const;
    Uint32 getArraySize() const;
    const CIMName& getReferenceClassName() const;
    CIMType getType() const;
    Boolean isUninitialized() const;
    Boolean identical(const CIMConstParameter& x) const;
    CIMParameter clone() const;

private:
    std::shared_ptr<CIMParameterRep> _rep;

    friend class CIMParameter;
    friend struct SdkRepAccess;
};

PEGASUS_NAMESPACE_END

#endif
