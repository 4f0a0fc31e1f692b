#ifndef CIMOM_OBJECTMANAGER_H
#define CIMOM_OBJECTMANAGER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMProvider.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include <cimrepo/ClassRepository.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace cimom
{

/**
    In-process CIM object manager.

    Holds the class repository, reads OpenPegasus provider registration
    (PG_ProviderModule, PG_Provider, PG_ProviderCapabilities in
    "root/PG_InterOp") and routes CIM operations to the registered C++
    providers by namespace and class, as an OpenPegasus server does.

    Life of a provider module and its providers:
      - the module library is opened (dlopen) and its PegasusCreateProvider
        resolved when its registration is loaded; a missing library or
        symbol is recorded in loadErrors() and on stderr;
      - PegasusCreateProvider(name) and initialize(handle()) are called
        lazily, once per provider, just before its first request; a null
        provider or a throwing initialize is recorded likewise and the
        provider's classes then answer CIM_ERR_FAILED;
      - shutdown() (also run by the destructor) calls terminate() once on
        every provider object created, and never touches it again.

    Checks made here before a provider is called: the namespace exists
    (CIM_ERR_INVALID_NAMESPACE), the class exists (CIM_ERR_INVALID_CLASS),
    the method exists in the class (CIM_ERR_METHOD_NOT_FOUND), in-parameters
    are typed from the method definition. Everything about keys, users and
    values is the provider's business. On the way back instances are
    filtered by deepInheritance, localOnly, the property list and the two
    include flags, association results by result class, and paths get this
    server's host and the request's namespace where the provider left them
    empty.

    Loading (load* and addModuleSearchPath) must finish before requests
    start; requests may then come from any number of threads.
*/
class ObjectManager : public Pegasus::CIMOMDispatcher
{
public:
    ObjectManager();
    ~ObjectManager() override;

    ObjectManager(const ObjectManager&) = delete;
    ObjectManager& operator=(const ObjectManager&) = delete;

    /** Compiles a MOF file into the given namespace (throws cimrepo::MofError). */
    void loadMofFile(const std::string& path, const Pegasus::CIMNamespaceName& ns);

    /** Compiles OpenPegasus registration MOF into "root/PG_InterOp" and
        registers the modules, providers and capabilities it declares. */
    void loadRegistrationFile(const std::string& path);

    /** Creates the provider of a built-in module by provider name (null
        for a name it does not know), as PegasusCreateProvider does. */
    typedef std::function<Pegasus::CIMProvider*(const Pegasus::String&)> BuiltInFactory;

    /** Registers a module that lives in the host rather than in a library:
        registration holds its PG_Provider and PG_ProviderCapabilities
        instances (ProviderModuleName = moduleName), which are routed and
        checked exactly as those of a loaded module. Not kept among
        registrationInstances(): the host describes itself there. */
    void addBuiltInModule(const std::string& moduleName, BuiltInFactory create,
                          const std::vector<Pegasus::CIMInstance>& registration);

    /** Every instance of the registration files loaded so far, in load
        order (provider, capabilities and profile registration alike). */
    std::vector<Pegasus::CIMInstance> registrationInstances() const;

    /** Loads every line of a load-order manifest ("<namespace> <path>" or
        "registration <path>", paths relative to baseDir; '#' comments). */
    void loadManifest(const std::string& manifestPath, const std::string& baseDir);

    /** Adds a directory searched for provider libraries, ahead of the
        defaults (env ORV_PROVIDER_DIR, then the directory of libcim_om). */
    void addModuleSearchPath(const std::string& dir);

    /** Host name put into delivered paths that lack one (default: this
        machine's host name). */
    void setHostName(const Pegasus::String& hostName);
    Pegasus::String getHostName() const;

    /** Makes CIMClient::connectLocal() reach this object manager. */
    void makeLocal();

    /** A CIMOMHandle whose requests go through this object manager. */
    Pegasus::CIMOMHandle handle();

    /** Terminates every provider created so far. Requests afterwards fail
        with CIM_ERR_FAILED. Safe to call more than once. */
    void shutdown();

    /** Problems met while loading modules and providers, one line each. */
    std::vector<std::string> loadErrors() const;

    /** The class repository (read-only once loading is done). */
    const cimrepo::ClassRepository& repository() const;

    /** Types untyped in-parameters (strings from a client) from the
        definition of className.methodName; see typeInParameters(). */
    Pegasus::Array<Pegasus::CIMParamValue> typeMethodParameters(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        const Pegasus::CIMName& methodName,
        const Pegasus::Array<Pegasus::CIMParamValue>& inParameters) const;

    // Request API (same as CIMOMHandle's, minus the handle).

    Pegasus::CIMClass getClass(const Pegasus::OperationContext& context,
                               const Pegasus::CIMNamespaceName& nameSpace,
                               const Pegasus::CIMName& className, Pegasus::Boolean localOnly,
                               Pegasus::Boolean includeQualifiers,
                               Pegasus::Boolean includeClassOrigin,
                               const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMClass> enumerateClasses(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin) override;

    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance) override;

    Pegasus::CIMInstance getInstance(const Pegasus::OperationContext& context,
                                     const Pegasus::CIMNamespaceName& nameSpace,
                                     const Pegasus::CIMObjectPath& instanceName,
                                     Pegasus::Boolean localOnly,
                                     Pegasus::Boolean includeQualifiers,
                                     Pegasus::Boolean includeClassOrigin,
                                     const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className) override;

    /** Hands each instance on as its provider delivers it. A sink that
        throws ends the enumeration with that exception. */
    void enumerateInstances(const Pegasus::OperationContext& context,
                            const Pegasus::CIMNamespaceName& nameSpace,
                            const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance,
                            Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
                            Pegasus::Boolean includeClassOrigin,
                            const Pegasus::CIMPropertyList& propertyList,
                            const InstanceSink& sink) override;

    void enumerateInstanceNames(const Pegasus::OperationContext& context,
                                const Pegasus::CIMNamespaceName& nameSpace,
                                const Pegasus::CIMName& className, const PathSink& sink) override;

    Pegasus::Array<Pegasus::CIMObject> associators(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole) override;

    Pegasus::Array<Pegasus::CIMObject> references(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;

    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role) override;

    Pegasus::CIMValue invokeMethod(const Pegasus::OperationContext& context,
                                   const Pegasus::CIMNamespaceName& nameSpace,
                                   const Pegasus::CIMObjectPath& instanceName,
                                   const Pegasus::CIMName& methodName,
                                   const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
                                   Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;

    Pegasus::CIMObjectPath createInstance(const Pegasus::OperationContext& context,
                                          const Pegasus::CIMNamespaceName& nameSpace,
                                          const Pegasus::CIMInstance& newInstance) override;

    void modifyInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMNamespaceName& nameSpace,
                        const Pegasus::CIMInstance& modifiedInstance,
                        Pegasus::Boolean includeQualifiers,
                        const Pegasus::CIMPropertyList& propertyList) override;

    void deleteInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMNamespaceName& nameSpace,
                        const Pegasus::CIMObjectPath& instanceName) override;

    /** Answered from the provider's getInstance, asked for that one property. */
    Pegasus::CIMValue getProperty(const Pegasus::OperationContext& context,
                                  const Pegasus::CIMNamespaceName& nameSpace,
                                  const Pegasus::CIMObjectPath& instanceName,
                                  const Pegasus::CIMName& propertyName) override;

    /** Reaches the provider as a modifyInstance of that one property. */
    void setProperty(const Pegasus::OperationContext& context,
                     const Pegasus::CIMNamespaceName& nameSpace,
                     const Pegasus::CIMObjectPath& instanceName,
                     const Pegasus::CIMName& propertyName,
                     const Pegasus::CIMValue& newValue) override;

private:
    struct Impl;
    std::unique_ptr<Impl> _impl;
};

/**
    While one exists on a thread, the latest array a provider delivered to a
    streamed enumeration (enumerateInstances with a sink) on that thread is
    let go when it goes, not when the provider returns. A host makes one per
    request and drops it once the answer is out: freeing a hundred thousand
    instances then no longer holds up the answer's last bytes. Only the
    latest delivery is kept, so a provider that delivers in chunks still has
    each one freed as the next arrives.
*/
class ReleaseAfterAnswer
{
public:
    ReleaseAfterAnswer();
    ~ReleaseAfterAnswer();
    ReleaseAfterAnswer(const ReleaseAfterAnswer&) = delete;
    ReleaseAfterAnswer& operator=(const ReleaseAfterAnswer&) = delete;

    /** Keeps `delivered` in the thread's innermost one, if there is one. */
    static void keep(const Pegasus::Array<Pegasus::CIMInstance>& delivered);

private:
    Pegasus::Array<Pegasus::CIMInstance> _latest;
    ReleaseAfterAnswer* _outer;
};

} // namespace cimom

#endif
