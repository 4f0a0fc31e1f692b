#ifndef CIMOM_INTEROPPROVIDER_H
#define CIMOM_INTEROPPROVIDER_H

#include <cimom/ProfileCatalog.h>

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include <functional>
#include <string>
#include <vector>

namespace cimom
{

class ObjectManager;

/** What the interop namespace says about the server itself. */
struct InteropSettings
{
    Pegasus::String hostName;
    Pegasus::Uint32 httpPort = 0;  // 0: not served
    Pegasus::Uint32 httpsPort = 0; // 0: not served
};

/**
    The interop namespace, read-only, as a discovering client walks it: the
    object manager, its host system, namespaces and CIM-XML endpoints, the
    registered profiles that provider registration declares, and the
    associations between them (CIM_HostedService, CIM_NamespaceInManager,
    CIM_CommMechanismForManager, CIM_ElementConformsToProfile to elements in
    other namespaces, CIM_ReferencedProfile). Paths to its own objects carry
    the namespace of the request, so each interop namespace is whole.
    Conforming elements are enumerated through the object manager with the
    caller's context, so their providers apply their own access rules.
*/
class InteropProvider : public Pegasus::CIMInstanceProvider, public Pegasus::CIMAssociationProvider
{
public:
    InteropProvider(const InteropSettings& settings,
                    const std::vector<Pegasus::CIMInstance>& registration,
                    const std::vector<Pegasus::CIMNamespaceName>& namespaces);

    static const char* const MODULE_NAME;
    static const char* const PROVIDER_NAME;

    /** The namespaces served, and the classes (with their kinds, 2 instance
        and 3 association) registered for them. */
    static std::vector<Pegasus::CIMNamespaceName> interopNamespaces();
    static std::vector<std::pair<Pegasus::CIMName, bool>> servedClasses();

    /** Registers the provider with om as a built-in module, for every
        served class in every interop namespace. Call after loading. */
    static void install(ObjectManager& om, const InteropSettings& settings);

    void initialize(Pegasus::CIMOMHandle& cimom) override;
    void terminate() override;

    void getInstance(const Pegasus::OperationContext& context,
                     const Pegasus::CIMObjectPath& instanceReference,
                     const Pegasus::Boolean includeQualifiers,
                     const Pegasus::Boolean includeClassOrigin,
                     const Pegasus::CIMPropertyList& propertyList,
                     Pegasus::InstanceResponseHandler& handler) override;
    void enumerateInstances(const Pegasus::OperationContext& context,
                            const Pegasus::CIMObjectPath& classReference,
                            const Pegasus::Boolean includeQualifiers,
                            const Pegasus::Boolean includeClassOrigin,
                            const Pegasus::CIMPropertyList& propertyList,
                            Pegasus::InstanceResponseHandler& handler) override;
    void enumerateInstanceNames(const Pegasus::OperationContext& context,
                                const Pegasus::CIMObjectPath& classReference,
                                Pegasus::ObjectPathResponseHandler& handler) override;
    void modifyInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        const Pegasus::CIMInstance& instanceObject,
                        const Pegasus::Boolean includeQualifiers,
                        const Pegasus::CIMPropertyList& propertyList,
                        Pegasus::ResponseHandler& handler) override;
    void createInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        const Pegasus::CIMInstance& instanceObject,
                        Pegasus::ObjectPathResponseHandler& handler) override;
    void deleteInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        Pegasus::ResponseHandler& handler) override;

    void associators(const Pegasus::OperationContext& context,
                     const Pegasus::CIMObjectPath& objectName,
                     const Pegasus::CIMName& associationClass, const Pegasus::CIMName& resultClass,
                     const Pegasus::String& role, const Pegasus::String& resultRole,
                     const Pegasus::Boolean includeQualifiers,
                     const Pegasus::Boolean includeClassOrigin,
                     const Pegasus::CIMPropertyList& propertyList,
                     Pegasus::ObjectResponseHandler& handler) override;
    void associatorNames(const Pegasus::OperationContext& context,
                         const Pegasus::CIMObjectPath& objectName,
                         const Pegasus::CIMName& associationClass,
                         const Pegasus::CIMName& resultClass, const Pegasus::String& role,
                         const Pegasus::String& resultRole,
                         Pegasus::ObjectPathResponseHandler& handler) override;
    void references(const Pegasus::OperationContext& context,
                    const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
                    const Pegasus::String& role, const Pegasus::Boolean includeQualifiers,
                    const Pegasus::Boolean includeClassOrigin,
                    const Pegasus::CIMPropertyList& propertyList,
                    Pegasus::ObjectResponseHandler& handler) override;
    void referenceNames(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& objectName,
                        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
                        Pegasus::ObjectPathResponseHandler& handler) override;

    /** The catalog built at initialize (for tests and diagnostics). */
    const ProfileCatalog& catalog() const
    {
        return _catalog;
    }

private:
    // One end of an association instance: its role and the path it names.
    struct Link
    {
        Pegasus::CIMInstance association;
        Pegasus::String fromRole;
        Pegasus::CIMObjectPath to;
        Pegasus::String toRole;
    };

    std::vector<Pegasus::CIMInstance> _instances(const Pegasus::OperationContext& context,
                                                 const Pegasus::CIMNamespaceName& ns,
                                                 const Pegasus::CIMName& className);
    std::vector<Pegasus::CIMInstance> _associations(const Pegasus::OperationContext& context,
                                                    const Pegasus::CIMNamespaceName& ns,
                                                    const Pegasus::CIMName& className);
    std::vector<Link> _links(const Pegasus::OperationContext& context,
                             const Pegasus::CIMObjectPath& objectName,
                             const Pegasus::CIMName& associationClass, const Pegasus::String& role,
                             const Pegasus::String& resultRole);
    Pegasus::CIMObjectPath _pathOf(const Pegasus::CIMInstance& instance,
                                   const Pegasus::CIMNamespaceName& ns);
    Pegasus::CIMInstance _skeleton(const Pegasus::CIMNamespaceName& ns,
                                   const Pegasus::CIMName& className);
    void _refuse(const char* operation);

    InteropSettings _settings;
    std::vector<Pegasus::CIMInstance> _registration;
    std::vector<Pegasus::CIMNamespaceName> _namespaces;
    Pegasus::CIMOMHandle _cimom;
    ProfileCatalog _catalog;
};

} // namespace cimom

#endif
