#ifndef Pegasus_SdkRepAccess_h
#define Pegasus_SdkRepAccess_h

// Representations behind the object handles, and the one door through which the
// implementation files reach a handle's representation. Not installed.

#include <memory>
#include <vector>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

struct SdkRepAccess
{
    template <class H>
    static auto& rep(H& handle)
    {
        return handle._rep;
    }

    template <class H>
    static const auto& rep(const H& handle)
    {
        return handle._rep;
    }

    template <class H, class R>
    static H wrap(const std::shared_ptr<R>& r)
    {
        H handle;
        handle._rep = r;
        return handle;
    }
};

// Dereferences a handle's representation; a default-constructed handle has none.
template <class R>
inline R& needRep(const std::shared_ptr<R>& rep)
{
    if (!rep)
    {
        throw UninitializedObjectException();
    }
    return *rep;
}

inline void checkIndex(Uint32 index, size_t size)
{
    if (index >= size)
    {
        throw IndexOutOfBoundsException();
    }
}

// Named elements (qualifiers, properties, methods, parameters) kept in declaration
// order and found by name without regard to case.
template <class T>
class NamedList
{
public:
    Uint32 find(const CIMName& name) const
    {
        for (size_t i = 0; i < items.size(); i++)
        {
            if (items[i].getName().equal(name))
            {
                return Uint32(i);
            }
        }
        return PEG_NOT_FOUND;
    }

    void add(const T& x, const char* what)
    {
        if (x.isUninitialized())
        {
            throw UninitializedObjectException();
        }
        if (find(x.getName()) != PEG_NOT_FOUND)
        {
            throw AlreadyExistsException(String(what) + " \"" + x.getName().getString() +
                                         "\" already exists");
        }
        items.push_back(x);
    }

    const T& get(Uint32 index) const
    {
        checkIndex(index, items.size());
        return items[index];
    }

    void remove(Uint32 index)
    {
        checkIndex(index, items.size());
        items.erase(items.begin() + index);
    }

    Uint32 count() const
    {
        return Uint32(items.size());
    }

    NamedList deepCopy() const
    {
        NamedList copy;
        copy.items.reserve(items.size());
        for (const T& x : items)
        {
            copy.items.push_back(x.clone());
        }
        return copy;
    }

    template <class ConstT>
    bool identical(const NamedList& other) const
    {
        if (items.size() != other.items.size())
        {
            return false;
        }
        for (size_t i = 0; i < items.size(); i++)
        {
            if (!items[i].identical(ConstT(other.items[i])))
            {
                return false;
            }
        }
        return true;
    }

    std::vector<T> items;
};

class CIMQualifierRep
{
public:
    CIMName name;
    CIMValue value;
    CIMFlavor flavor;
    Boolean propagated = false;
};

class CIMQualifierDeclRep
{
public:
    CIMName name;
    CIMValue value;
    CIMScope scope;
    CIMFlavor flavor;
    Uint32 arraySize = 0;
};

class CIMPropertyRep
{
public:
    CIMName name;
    CIMValue value;
    Uint32 arraySize = 0;
    CIMName referenceClassName;
    CIMName classOrigin;
    Boolean propagated = false;
    NamedList<CIMQualifier> qualifiers;
};

class CIMParameterRep
{
public:
    CIMName name;
    CIMType type = CIMTYPE_BOOLEAN;
    Boolean isArray = false;
    Uint32 arraySize = 0;
    CIMName referenceClassName;
    NamedList<CIMQualifier> qualifiers;
};

class CIMMethodRep
{
public:
    CIMName name;
    CIMType type = CIMTYPE_BOOLEAN;
    CIMName classOrigin;
    Boolean propagated = false;
    NamedList<CIMQualifier> qualifiers;
    NamedList<CIMParameter> parameters;
};

// One representation serves classes and instances, so that CIMObject can share it
// with either.
class CIMObjectRep
{
public:
    enum Kind
    {
        CLASS,
        INSTANCE
    };

    Kind kind = INSTANCE;
    CIMName className;
    CIMName superClassName;
    CIMObjectPath path;
    NamedList<CIMQualifier> qualifiers;
    NamedList<CIMProperty> properties;
    NamedList<CIMMethod> methods;

    std::shared_ptr<CIMObjectRep> deepCopy() const;
    bool identical(const CIMObjectRep& other) const;
    String toMof() const;
};

// True when the element carries the named boolean qualifier with value true.
template <class List>
inline bool hasTrueQualifier(const List& qualifiers, const char* name)
{
    Uint32 pos = qualifiers.find(CIMName(name));
    if (pos == PEG_NOT_FOUND)
    {
        return false;
    }
    const CIMValue& v = qualifiers.get(pos).getValue();
    if (v.isNull() || v.isArray() || v.getType() != CIMTYPE_BOOLEAN)
    {
        return false;
    }
    Boolean b = false;
    v.get(b);
    return b;
}

PEGASUS_NAMESPACE_END

#endif
