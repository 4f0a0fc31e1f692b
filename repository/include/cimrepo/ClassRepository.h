#ifndef CIMREPO_CLASSREPOSITORY_H
#define CIMREPO_CLASSREPOSITORY_H

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMStatusCode.h>

#include <map>
#include <string>
#include <vector>

namespace cimrepo
{

/// Class definitions and qualifier declarations, per namespace.
///
/// Classes are stored resolved: a subclass carries its superclass's properties, methods and the
/// qualifiers whose flavor propagates (ToSubclass), marked propagated and with their class
/// origin; a property or method redefined in the subclass replaces the inherited one.
///
/// Thread safety: the repository is filled while the object manager loads its MOF, before any
/// request is served, and is read-only afterwards. The const operations therefore take no lock
/// and may run on many threads at once; the mutating ones must not run concurrently with anything.
///
/// Errors are CIMExceptions with the status codes a CIM server answers: CIM_ERR_INVALID_NAMESPACE
/// for an unknown namespace, CIM_ERR_NOT_FOUND (getClass) or CIM_ERR_INVALID_CLASS (enumerations)
/// for an unknown class, CIM_ERR_INVALID_SUPERCLASS and CIM_ERR_ALREADY_EXISTS when adding.
class ClassRepository
{
public:
    ClassRepository();
    ~ClassRepository();

    ClassRepository(const ClassRepository&) = delete;
    ClassRepository& operator=(const ClassRepository&) = delete;

    // ---- loading

    /// Creates the namespace if it does not exist yet.
    void createNamespace(const Pegasus::CIMNamespaceName& nameSpace);

    /// Adds a class given with its local features only (features marked propagated are ignored and
    /// derived again from the superclass). Creates the namespace when needed. The superclass must
    /// already be there. The repository keeps its own copy.
    void addClass(const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMClass& cimClass);

    /// Adds or replaces a qualifier declaration. Creates the namespace when needed.
    void addQualifierDecl(const Pegasus::CIMNamespaceName& nameSpace,
                          const Pegasus::CIMQualifierDecl& qualifierDecl);

    // ---- classes

    /// The class as a CIM server's GetClass answers it: localOnly keeps only the properties,
    /// methods and qualifiers defined or overridden in the class itself; includeQualifiers keeps
    /// the qualifiers of the class and of its features; includeClassOrigin keeps class origins;
    /// a non-null propertyList keeps only the listed properties. Answers an independent copy.
    Pegasus::CIMClass getClass(const Pegasus::CIMNamespaceName& nameSpace,
                               const Pegasus::CIMName& className, Pegasus::Boolean localOnly,
                               Pegasus::Boolean includeQualifiers,
                               Pegasus::Boolean includeClassOrigin,
                               const Pegasus::CIMPropertyList& propertyList) const;

    /// With a null className: the root classes, or every class when deepInheritance. Otherwise the
    /// direct subclasses, or all descendants when deepInheritance. In the order of definition.
    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(const Pegasus::CIMNamespaceName& nameSpace,
                                                         const Pegasus::CIMName& className,
                                                         Pegasus::Boolean deepInheritance) const;

    /// The classes that enumerateClassNames names, each filtered as getClass does.
    Pegasus::Array<Pegasus::CIMClass>
    enumerateClasses(const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
                     Pegasus::Boolean deepInheritance, Pegasus::Boolean localOnly,
                     Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin) const;

    /// Same as enumerateClassNames; kept under the name the object manager's dispatch uses.
    Pegasus::Array<Pegasus::CIMName> getSubClassNames(const Pegasus::CIMNamespaceName& nameSpace,
                                                      const Pegasus::CIMName& className,
                                                      Pegasus::Boolean deep) const;

    /// The direct superclass (null for a root class). Throws as getClass does.
    Pegasus::CIMName getSuperClassName(const Pegasus::CIMNamespaceName& nameSpace,
                                       const Pegasus::CIMName& className) const;

    /// True when subClass is superClass or derives from it. False for unknown names; never throws.
    Pegasus::Boolean isSubClassOf(const Pegasus::CIMNamespaceName& nameSpace,
                                  const Pegasus::CIMName& subClass,
                                  const Pegasus::CIMName& superClass) const;

    Pegasus::Boolean classExists(const Pegasus::CIMNamespaceName& nameSpace,
                                 const Pegasus::CIMName& className) const;

    Pegasus::Boolean namespaceExists(const Pegasus::CIMNamespaceName& nameSpace) const;

    Pegasus::Array<Pegasus::CIMNamespaceName> enumerateNamespaces() const;

    // ---- qualifier declarations

    /// Null (uninitialized) declaration when the namespace or the qualifier is unknown.
    Pegasus::CIMQualifierDecl findQualifierDecl(const Pegasus::CIMNamespaceName& nameSpace,
                                                const Pegasus::CIMName& name) const;

    /// Throws CIM_ERR_INVALID_NAMESPACE or CIM_ERR_NOT_FOUND.
    Pegasus::CIMQualifierDecl getQualifierDecl(const Pegasus::CIMNamespaceName& nameSpace,
                                               const Pegasus::CIMName& name) const;

    Pegasus::Array<Pegasus::CIMQualifierDecl>
    enumerateQualifierDecls(const Pegasus::CIMNamespaceName& nameSpace) const;

private:
    struct ClassEntry
    {
        Pegasus::CIMClass resolved;
        std::string superKey; // empty for a root class
        std::vector<std::string> children;
    };

    struct Namespace
    {
        Pegasus::CIMNamespaceName name;
        std::map<std::string, ClassEntry> classes;
        std::vector<std::string> order; // class keys in order of definition
        std::map<std::string, Pegasus::CIMQualifierDecl> qualifiers;
        std::vector<std::string> qualifierOrder;
    };

    const Namespace& _namespace(const Pegasus::CIMNamespaceName& nameSpace) const;
    const Namespace* _findNamespace(const Pegasus::CIMNamespaceName& nameSpace) const;
    Namespace& _namespaceForUpdate(const Pegasus::CIMNamespaceName& nameSpace);
    const ClassEntry& _entry(const Namespace& ns, const Pegasus::CIMName& className,
                             Pegasus::CIMStatusCode codeIfMissing) const;
    void _collectNames(const Namespace& ns, const std::string& key, Pegasus::Boolean deep,
                       Pegasus::Array<Pegasus::CIMName>& out) const;

    std::map<std::string, Namespace> _namespaces;
    std::vector<std::string> _namespaceOrder;
};

} // namespace cimrepo

#endif
