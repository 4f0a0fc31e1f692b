#include <cimrepo/ClassRepository.h>

#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/Exception.h>

#include <functional>

using namespace Pegasus;

namespace cimrepo
{
namespace
{

// Names compare without regard to case, so maps are keyed by the lower-cased text.
std::string lowerKey(const String& s)
{
    String t(s);
    t.toLower();
    return std::string(static_cast<const char*>(t.getCString()));
}

bool propagatesToSubclass(const CIMConstQualifier& q)
{
    return q.getFlavor().hasFlavor(CIMFlavor::TOSUBCLASS) &&
           !q.getFlavor().hasFlavor(CIMFlavor::RESTRICTED);
}

// The qualifiers a subclass element inherits: the propagating ones of the inherited element that
// the subclass element does not set itself. A qualifier that forbids overriding must not change.
template <class Target, class Source>
void inheritQualifiers(Target& target, Source& inherited, const String& where)
{
    for (Uint32 i = 0; i < inherited.getQualifierCount(); ++i)
    {
        CIMQualifier q = inherited.getQualifier(i);
        if (!propagatesToSubclass(q))
        {
            continue;
        }
        Uint32 own = target.findQualifier(q.getName());
        if (own != PEG_NOT_FOUND)
        {
            if (!q.getFlavor().hasFlavor(CIMFlavor::ENABLEOVERRIDE) &&
                !target.getQualifier(own).getValue().equal(q.getValue()))
            {
                throw CIMException(CIM_ERR_INVALID_PARAMETER, "qualifier " +
                                                                  q.getName().getString() + " of " +
                                                                  where + " cannot be overridden");
            }
            continue;
        }
        CIMQualifier copy = q.clone();
        copy.setPropagated(true);
        target.addQualifier(copy);
    }
}

template <class Element> void dropPropagatedQualifiers(Element& e)
{
    for (Uint32 i = e.getQualifierCount(); i-- > 0;)
    {
        if (e.getQualifier(i).getPropagated())
        {
            e.removeQualifier(i);
        }
    }
}

template <class Element> void dropAllQualifiers(Element& e)
{
    for (Uint32 i = e.getQualifierCount(); i-- > 0;)
    {
        e.removeQualifier(i);
    }
}

// An element the subclass does not redeclare is copied whole, as OpenPegasus
// does: its qualifiers come along, restricted ones included, marked as
// propagated.
template <class Element> void markInherited(Element& e)
{
    for (Uint32 i = e.getQualifierCount(); i-- > 0;)
    {
        e.getQualifier(i).setPropagated(true);
    }
    e.setPropagated(true);
}

bool sameShape(const CIMProperty& a, const CIMProperty& b)
{
    return a.getType() == b.getType() && a.isArray() == b.isArray();
}

} // namespace

ClassRepository::ClassRepository() = default;
ClassRepository::~ClassRepository() = default;

// ---------------------------------------------------------------- namespaces

const ClassRepository::Namespace*
ClassRepository::_findNamespace(const CIMNamespaceName& nameSpace) const
{
    if (nameSpace.isNull())
    {
        return nullptr;
    }
    auto it = _namespaces.find(lowerKey(nameSpace.getString()));
    return it == _namespaces.end() ? nullptr : &it->second;
}

const ClassRepository::Namespace&
ClassRepository::_namespace(const CIMNamespaceName& nameSpace) const
{
    const Namespace* ns = _findNamespace(nameSpace);
    if (!ns)
    {
        throw CIMException(CIM_ERR_INVALID_NAMESPACE,
                           nameSpace.isNull() ? String("(no namespace)") : nameSpace.getString());
    }
    return *ns;
}

ClassRepository::Namespace& ClassRepository::_namespaceForUpdate(const CIMNamespaceName& nameSpace)
{
    if (nameSpace.isNull())
    {
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, "(no namespace)");
    }
    std::string key = lowerKey(nameSpace.getString());
    auto it = _namespaces.find(key);
    if (it == _namespaces.end())
    {
        it = _namespaces.emplace(key, Namespace()).first;
        it->second.name = nameSpace;
        _namespaceOrder.push_back(key);
    }
    return it->second;
}

void ClassRepository::createNamespace(const CIMNamespaceName& nameSpace)
{
    _namespaceForUpdate(nameSpace);
}

Boolean ClassRepository::namespaceExists(const CIMNamespaceName& nameSpace) const
{
    return _findNamespace(nameSpace) != nullptr;
}

Array<CIMNamespaceName> ClassRepository::enumerateNamespaces() const
{
    Array<CIMNamespaceName> out;
    for (const std::string& key : _namespaceOrder)
    {
        out.append(_namespaces.at(key).name);
    }
    return out;
}

// ---------------------------------------------------------------- adding classes

void ClassRepository::addClass(const CIMNamespaceName& nameSpace, const CIMClass& cimClass)
{
    if (cimClass.isUninitialized())
    {
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "uninitialized class");
    }
    Namespace& ns = _namespaceForUpdate(nameSpace);
    const CIMName& className = cimClass.getClassName();
    std::string key = lowerKey(className.getString());
    if (ns.classes.count(key))
    {
        throw CIMException(CIM_ERR_ALREADY_EXISTS, "class " + className.getString() +
                                                       " already exists in namespace " +
                                                       ns.name.getString());
    }

    CIMClass local = cimClass.clone();
    const CIMName superName = local.getSuperClassName();
    ClassEntry* superEntry = nullptr;
    std::string superKey;
    if (!superName.isNull())
    {
        superKey = lowerKey(superName.getString());
        auto it = ns.classes.find(superKey);
        if (it == ns.classes.end())
        {
            throw CIMException(CIM_ERR_INVALID_SUPERCLASS,
                               "superclass " + superName.getString() + " of class " +
                                   className.getString() + " does not exist in namespace " +
                                   ns.name.getString());
        }
        superEntry = &it->second;
        // Keep the superclass spelled as it was defined.
        local.setSuperClassName(superEntry->resolved.getClassName());
    }

    // What the caller marked as inherited is derived again below.
    dropPropagatedQualifiers(local);
    for (Uint32 i = local.getPropertyCount(); i-- > 0;)
    {
        if (local.getProperty(i).getPropagated())
        {
            local.removeProperty(i);
        }
    }
    for (Uint32 i = local.getMethodCount(); i-- > 0;)
    {
        if (local.getMethod(i).getPropagated())
        {
            local.removeMethod(i);
        }
    }

    CIMClass resolved(className, local.getSuperClassName());
    for (Uint32 i = 0; i < local.getQualifierCount(); ++i)
    {
        resolved.addQualifier(local.getQualifier(i).clone());
    }

    std::vector<bool> usedProperty(local.getPropertyCount(), false);
    std::vector<bool> usedMethod(local.getMethodCount(), false);
    if (superEntry)
    {
        CIMClass& super = superEntry->resolved;
        inheritQualifiers(resolved, super, "class " + className.getString());

        // Properties the class does not redeclare come first, in the
        // superclass's order; then the class's own in the order declared,
        // an overriding one keeping the origin of the property it overrides
        // (the order and origins OpenPegasus gives).
        for (Uint32 i = 0; i < super.getPropertyCount(); ++i)
        {
            CIMProperty inherited = super.getProperty(i);
            if (local.findProperty(inherited.getName()) == PEG_NOT_FOUND)
            {
                CIMProperty copy = inherited.clone();
                markInherited(copy);
                resolved.addProperty(copy);
            }
        }
        for (Uint32 own = 0; own < local.getPropertyCount(); ++own)
        {
            CIMProperty p = local.getProperty(own).clone();
            Uint32 i = super.findProperty(p.getName());
            if (i == PEG_NOT_FOUND)
            {
                p.setClassOrigin(className);
                p.setPropagated(false);
                resolved.addProperty(p);
                usedProperty[own] = true;
                continue;
            }
            CIMProperty inherited = super.getProperty(i);
            usedProperty[own] = true;
            String where = "property " + className.getString() + "." + p.getName().getString();
            if (!sameShape(p, inherited))
            {
                throw CIMException(CIM_ERR_INVALID_PARAMETER,
                                   where + " changes the type of the inherited property");
            }
            inheritQualifiers(p, inherited, where);
            if (p.getValue().isNull() && !inherited.getValue().isNull())
            {
                p.setValue(inherited.getValue());
            }
            p.setClassOrigin(inherited.getClassOrigin());
            p.setPropagated(false);
            resolved.addProperty(p);
        }
        for (Uint32 i = 0; i < super.getMethodCount(); ++i)
        {
            CIMMethod inherited = super.getMethod(i);
            Uint32 own = local.findMethod(inherited.getName());
            if (own == PEG_NOT_FOUND)
            {
                CIMMethod copy = inherited.clone();
                markInherited(copy);
                resolved.addMethod(copy);
                continue;
            }
            usedMethod[own] = true;
            CIMMethod m = local.getMethod(own).clone();
            String where = "method " + className.getString() + "." + m.getName().getString();
            if (m.getType() != inherited.getType())
            {
                throw CIMException(CIM_ERR_INVALID_PARAMETER,
                                   where + " changes the type of the inherited method");
            }
            inheritQualifiers(m, inherited, where);
            m.setClassOrigin(className);
            m.setPropagated(false);
            resolved.addMethod(m);
        }
    }
    for (Uint32 i = 0; i < local.getPropertyCount(); ++i)
    {
        if (!usedProperty[i])
        {
            CIMProperty p = local.getProperty(i).clone();
            p.setClassOrigin(className);
            p.setPropagated(false);
            resolved.addProperty(p);
        }
    }
    for (Uint32 i = 0; i < local.getMethodCount(); ++i)
    {
        if (!usedMethod[i])
        {
            CIMMethod m = local.getMethod(i).clone();
            m.setClassOrigin(className);
            m.setPropagated(false);
            resolved.addMethod(m);
        }
    }

    ClassEntry entry;
    entry.resolved = resolved;
    entry.superKey = superKey;
    ns.classes.emplace(key, entry);
    ns.order.push_back(key);
    if (superEntry)
    {
        superEntry->children.push_back(key);
    }
}

void ClassRepository::addQualifierDecl(const CIMNamespaceName& nameSpace,
                                       const CIMQualifierDecl& qualifierDecl)
{
    if (qualifierDecl.isUninitialized())
    {
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "uninitialized qualifier declaration");
    }
    Namespace& ns = _namespaceForUpdate(nameSpace);
    std::string key = lowerKey(qualifierDecl.getName().getString());
    if (!ns.qualifiers.count(key))
    {
        ns.qualifierOrder.push_back(key);
    }
    ns.qualifiers[key] = qualifierDecl.clone();
}

// ---------------------------------------------------------------- reading classes

const ClassRepository::ClassEntry& ClassRepository::_entry(const Namespace& ns,
                                                           const CIMName& className,
                                                           CIMStatusCode codeIfMissing) const
{
    auto it =
        className.isNull() ? ns.classes.end() : ns.classes.find(lowerKey(className.getString()));
    if (it == ns.classes.end())
    {
        throw CIMException(codeIfMissing,
                           className.isNull() ? String("(no class)") : className.getString());
    }
    return it->second;
}

CIMClass ClassRepository::getClass(const CIMNamespaceName& nameSpace, const CIMName& className,
                                   Boolean localOnly, Boolean includeQualifiers,
                                   Boolean includeClassOrigin,
                                   const CIMPropertyList& propertyList) const
{
    const Namespace& ns = _namespace(nameSpace);
    CIMClass c = _entry(ns, className, CIM_ERR_NOT_FOUND).resolved.clone();

    if (localOnly)
    {
        dropPropagatedQualifiers(c);
    }
    for (Uint32 i = c.getPropertyCount(); i-- > 0;)
    {
        CIMProperty p = c.getProperty(i);
        bool listed = true;
        if (!propertyList.isNull())
        {
            listed = false;
            for (Uint32 k = 0; k < propertyList.size() && !listed; ++k)
            {
                listed = propertyList[k].equal(p.getName());
            }
        }
        if ((localOnly && p.getPropagated()) || !listed)
        {
            c.removeProperty(i);
            continue;
        }
        if (!includeQualifiers)
        {
            dropAllQualifiers(p);
        }
        if (!includeClassOrigin)
        {
            p.setClassOrigin(CIMName());
        }
    }
    for (Uint32 i = c.getMethodCount(); i-- > 0;)
    {
        CIMMethod m = c.getMethod(i);
        if (localOnly && m.getPropagated())
        {
            c.removeMethod(i);
            continue;
        }
        if (!includeQualifiers)
        {
            dropAllQualifiers(m);
            for (Uint32 k = 0; k < m.getParameterCount(); ++k)
            {
                CIMParameter param = m.getParameter(k);
                dropAllQualifiers(param);
            }
        }
        if (!includeClassOrigin)
        {
            m.setClassOrigin(CIMName());
        }
    }
    if (!includeQualifiers)
    {
        dropAllQualifiers(c);
    }
    return c;
}

void ClassRepository::_collectNames(const Namespace& ns, const std::string& key, Boolean deep,
                                    Array<CIMName>& out) const
{
    for (const std::string& child : ns.classes.at(key).children)
    {
        out.append(ns.classes.at(child).resolved.getClassName());
        if (deep)
        {
            _collectNames(ns, child, deep, out);
        }
    }
}

Array<CIMName> ClassRepository::enumerateClassNames(const CIMNamespaceName& nameSpace,
                                                    const CIMName& className,
                                                    Boolean deepInheritance) const
{
    const Namespace& ns = _namespace(nameSpace);
    Array<CIMName> out;
    if (className.isNull())
    {
        for (const std::string& key : ns.order)
        {
            const ClassEntry& e = ns.classes.at(key);
            if (deepInheritance || e.superKey.empty())
            {
                out.append(e.resolved.getClassName());
            }
        }
        return out;
    }
    _entry(ns, className, CIM_ERR_INVALID_CLASS);
    std::string key = lowerKey(className.getString());
    if (!deepInheritance)
    {
        _collectNames(ns, key, false, out);
        return out;
    }
    // Definition order, as for the whole namespace: a class always follows its superclass.
    for (const std::string& k : ns.order)
    {
        if (k == key)
        {
            continue;
        }
        for (std::string up = ns.classes.at(k).superKey; !up.empty();
             up = ns.classes.at(up).superKey)
        {
            if (up == key)
            {
                out.append(ns.classes.at(k).resolved.getClassName());
                break;
            }
        }
    }
    return out;
}

Array<CIMClass> ClassRepository::enumerateClasses(const CIMNamespaceName& nameSpace,
                                                  const CIMName& className, Boolean deepInheritance,
                                                  Boolean localOnly, Boolean includeQualifiers,
                                                  Boolean includeClassOrigin) const
{
    Array<CIMName> names = enumerateClassNames(nameSpace, className, deepInheritance);
    Array<CIMClass> out;
    for (Uint32 i = 0; i < names.size(); ++i)
    {
        out.append(getClass(nameSpace, names[i], localOnly, includeQualifiers, includeClassOrigin,
                            CIMPropertyList()));
    }
    return out;
}

Array<CIMName> ClassRepository::getSubClassNames(const CIMNamespaceName& nameSpace,
                                                 const CIMName& className, Boolean deep) const
{
    return enumerateClassNames(nameSpace, className, deep);
}

CIMName ClassRepository::getSuperClassName(const CIMNamespaceName& nameSpace,
                                           const CIMName& className) const
{
    const Namespace& ns = _namespace(nameSpace);
    return _entry(ns, className, CIM_ERR_NOT_FOUND).resolved.getSuperClassName();
}

Boolean ClassRepository::isSubClassOf(const CIMNamespaceName& nameSpace, const CIMName& subClass,
                                      const CIMName& superClass) const
{
    const Namespace* ns = _findNamespace(nameSpace);
    if (!ns || subClass.isNull() || superClass.isNull())
    {
        return false;
    }
    std::string target = lowerKey(superClass.getString());
    std::string key = lowerKey(subClass.getString());
    if (!ns->classes.count(key) || !ns->classes.count(target))
    {
        return false;
    }
    for (; !key.empty(); key = ns->classes.at(key).superKey)
    {
        if (key == target)
        {
            return true;
        }
    }
    return false;
}

Boolean ClassRepository::classExists(const CIMNamespaceName& nameSpace,
                                     const CIMName& className) const
{
    const Namespace* ns = _findNamespace(nameSpace);
    return ns && !className.isNull() && ns->classes.count(lowerKey(className.getString())) > 0;
}

// ---------------------------------------------------------------- qualifier declarations

CIMQualifierDecl ClassRepository::findQualifierDecl(const CIMNamespaceName& nameSpace,
                                                    const CIMName& name) const
{
    const Namespace* ns = _findNamespace(nameSpace);
    if (!ns || name.isNull())
    {
        return CIMQualifierDecl();
    }
    auto it = ns->qualifiers.find(lowerKey(name.getString()));
    return it == ns->qualifiers.end() ? CIMQualifierDecl() : it->second.clone();
}

CIMQualifierDecl ClassRepository::getQualifierDecl(const CIMNamespaceName& nameSpace,
                                                   const CIMName& name) const
{
    _namespace(nameSpace);
    CIMQualifierDecl d = findQualifierDecl(nameSpace, name);
    if (d.isUninitialized())
    {
        throw CIMException(CIM_ERR_NOT_FOUND,
                           name.isNull() ? String("(no name)") : name.getString());
    }
    return d;
}

Array<CIMQualifierDecl>
ClassRepository::enumerateQualifierDecls(const CIMNamespaceName& nameSpace) const
{
    const Namespace& ns = _namespace(nameSpace);
    Array<CIMQualifierDecl> out;
    for (const std::string& key : ns.qualifierOrder)
    {
        out.append(ns.qualifiers.at(key).clone());
    }
    return out;
}

} // namespace cimrepo
