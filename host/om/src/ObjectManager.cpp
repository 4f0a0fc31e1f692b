#include <cimom/ObjectManager.h>
#include <cimom/ParamTyping.h>

#include "ProviderRegistry.h"
#include "RegistrationMof.h"
#include "ResponseCollectors.h"
#include "ResultFilter.h"
#include <Pegasus/Sdk/Ownership.h>
#include "Text.h"

#include <cimrepo/ClassRepository.h>
#include <cimrepo/MofCompiler.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <unistd.h>

PEGASUS_USING_PEGASUS;

namespace cimom
{

namespace
{

const CIMNamespaceName INTEROP_NAMESPACE("root/PG_InterOp");

String localHostName()
{
    char buffer[256] = {0};
    if (::gethostname(buffer, sizeof(buffer) - 1) != 0 || buffer[0] == '\0')
    {
        return String("localhost");
    }
    return String(buffer);
}

// OpenPegasus hands every provider request an identity; an empty user name
// stands for the server itself.
OperationContext withIdentity(const OperationContext& context)
{
    if (context.contains(IdentityContainer::NAME))
    {
        return context;
    }
    OperationContext result(context);
    result.insert(IdentityContainer(String()));
    return result;
}

// Runs one operation and turns whatever escapes into a CIMException: a
// provider's own CIMException passes unchanged, anything else is a failure.
template <class Operation> auto translated(Operation&& operation) -> decltype(operation())
{
    try
    {
        return operation();
    }
    catch (const CIMException&)
    {
        throw;
    }
    catch (const Exception& e)
    {
        throw CIMException(CIM_ERR_FAILED, e.getMessage());
    }
    catch (const std::exception& e)
    {
        throw CIMException(CIM_ERR_FAILED, String(e.what()));
    }
    catch (...)
    {
        throw CIMException(CIM_ERR_FAILED, String("unknown exception in a provider"));
    }
}

// Holds an acquired provider for the length of one call.
class ProviderCall
{
public:
    ProviderCall(const Registration& reg, CIMProvider* provider)
        : _entry(reg.provider), _provider(provider)
    {
    }
    ~ProviderCall()
    {
        _entry->release();
    }
    ProviderCall(const ProviderCall&) = delete;
    ProviderCall& operator=(const ProviderCall&) = delete;

    template <class Interface> Interface& as(const char* kind)
    {
        Interface* p = dynamic_cast<Interface*>(_provider);
        if (!p)
        {
            throw CIMException(CIM_ERR_FAILED,
                               String((_entry->label() + " is registered as " + kind +
                                       " provider but does not implement it")
                                          .c_str()));
        }
        return *p;
    }

    const std::string& name() const
    {
        return _entry->name();
    }

private:
    ProviderEntry* _entry;
    CIMProvider* _provider;
};

// Calls serve(call, registration) for every provider a request reaches.
// One module that cannot be loaded must not take the others down with it:
// a provider that failed to load is skipped while any other one answers,
// and only when none of them could be loaded does the request fail, with
// their reasons. Whatever a loaded provider throws fails the request as is.
template <class Serve>
void forEachProvider(const std::vector<Registration>& registrations, CIMOMHandle& handle,
                     ErrorLog& errors, Serve&& serve)
{
    std::vector<std::string> reasons;
    bool anyLoaded = false;
    for (const Registration& reg : registrations)
    {
        std::string loadError;
        CIMProvider* provider = reg.provider->tryAcquire(handle, errors, loadError);
        if (!provider)
        {
            // Already reported once, when the failure happened.
            if (std::find(reasons.begin(), reasons.end(), loadError) == reasons.end())
            {
                reasons.push_back(loadError);
            }
            continue;
        }
        anyLoaded = true;
        ProviderCall call(reg, provider);
        serve(call, reg);
    }
    if (!anyLoaded && !reasons.empty())
    {
        std::string text;
        for (const std::string& reason : reasons)
        {
            text += (text.empty() ? "" : "; ") + reason;
        }
        throw CIMException(CIM_ERR_FAILED, String(text.c_str()));
    }
}

} // namespace

struct ObjectManager::Impl
{
    explicit Impl(ObjectManager& om) : registry(errors), hostName(localHostName())
    {
        handle = Sdk::makeCIMOMHandle(&om);
    }

    cimrepo::ClassRepository repo;
    ErrorLog errors;
    ProviderRegistry registry;
    String hostName;
    CIMOMHandle handle;
    std::mutex shutdownMutex;
    bool shutDown = false;
    std::vector<CIMInstance> registrationInstances;

    void checkNamespace(const CIMNamespaceName& ns) const
    {
        if (ns.isNull() || !repo.namespaceExists(ns))
        {
            throw CIMException(CIM_ERR_INVALID_NAMESPACE, ns.getString());
        }
    }

    void checkClass(const CIMNamespaceName& ns, const CIMName& className) const
    {
        checkNamespace(ns);
        if (className.isNull() || !repo.classExists(ns, className))
        {
            throw CIMException(CIM_ERR_INVALID_CLASS, className.getString());
        }
    }

    // What every association request checks first: a role and a result role
    // that are legal names, an object of a class the namespace knows.
    void checkAssociationRequest(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
                                 const String& role, const String* resultRole) const
    {
        checkNamespace(ns);
        if (role.size() != 0 && !CIMName::legal(role))
        {
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "role " + role);
        }
        if (resultRole && resultRole->size() != 0 && !CIMName::legal(*resultRole))
        {
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "resultRole " + *resultRole);
        }
        const CIMName className = objectName.getClassName();
        if (className.isNull() || !repo.classExists(ns, className))
        {
            throw CIMException(CIM_ERR_INVALID_PARAMETER,
                               className.isNull() ? String() : className.getString());
        }
    }

    // Class-level association requests are answered from the class
    // definitions: each association class with a reference (named role, when
    // given) that can point at the object's class, paired with the class of
    // each of its other references (named resultRole, when given).
    struct ClassAssociation
    {
        CIMName assocClass;
        CIMName resultClass;
    };

    std::vector<ClassAssociation> classAssociations(const CIMNamespaceName& ns,
                                                    const CIMName& objectClass,
                                                    const CIMName& assocFilter,
                                                    const CIMName& resultFilter,
                                                    const String& role,
                                                    const String& resultRole) const
    {
        std::vector<ClassAssociation> found;
        Array<CIMName> classes = repo.enumerateClassNames(ns, CIMName(), true);
        for (Uint32 c = 0; c < classes.size(); c++)
        {
            if (!classMatches(ns, classes[c], assocFilter))
            {
                continue;
            }
            CIMClass cls = repo.getClass(ns, classes[c], false, true, false, CIMPropertyList());
            if (!cls.isAssociation())
            {
                continue;
            }
            for (Uint32 i = 0; i < cls.getPropertyCount(); i++)
            {
                CIMConstProperty from = cls.getProperty(i);
                if (from.getType() != CIMTYPE_REFERENCE ||
                    (role.size() != 0 && !String::equalNoCase(role, from.getName().getString())) ||
                    !repo.isSubClassOf(ns, objectClass, from.getReferenceClassName()))
                {
                    continue;
                }
                for (Uint32 j = 0; j < cls.getPropertyCount(); j++)
                {
                    CIMConstProperty to = cls.getProperty(j);
                    if (j == i || to.getType() != CIMTYPE_REFERENCE ||
                        (resultRole.size() != 0 &&
                         !String::equalNoCase(resultRole, to.getName().getString())) ||
                        !classMatches(ns, to.getReferenceClassName(), resultFilter))
                    {
                        continue;
                    }
                    found.push_back(ClassAssociation{cls.getClassName(), to.getReferenceClassName()});
                }
            }
        }
        return found;
    }

    // Each class once, as a class path of this server, in the order met.
    Array<CIMObjectPath> classPaths(const CIMNamespaceName& ns,
                                    const std::vector<CIMName>& names) const
    {
        Array<CIMObjectPath> paths;
        NameSet seen;
        for (const CIMName& name : names)
        {
            if (seen.insert(lower(name.getString())).second)
            {
                paths.append(CIMObjectPath(hostName, ns, name));
            }
        }
        return paths;
    }

    Array<CIMObject> classObjects(const CIMNamespaceName& ns, const Array<CIMObjectPath>& paths,
                                  Boolean includeQualifiers, Boolean includeClassOrigin,
                                  const CIMPropertyList& propertyList) const
    {
        Array<CIMObject> objects;
        for (Uint32 i = 0; i < paths.size(); i++)
        {
            CIMClass cls = repo.getClass(ns, paths[i].getClassName(), false, includeQualifiers,
                                         includeClassOrigin, propertyList);
            cls.setPath(paths[i]);
            objects.append(CIMObject(cls));
        }
        return objects;
    }

    NameSet propertyNames(const CIMNamespaceName& ns, const CIMName& className) const
    {
        NameSet names;
        if (className.isNull() || !repo.classExists(ns, className))
        {
            return names;
        }
        CIMClass cls = repo.getClass(ns, className, false, false, false, CIMPropertyList());
        for (Uint32 i = 0; i < cls.getPropertyCount(); i++)
        {
            names.insert(lower(cls.getProperty(i).getName().getString()));
        }
        return names;
    }

    // The path a provider sees: this server's host, the request's namespace.
    CIMObjectPath requestPath(const CIMNamespaceName& ns, const CIMObjectPath& given) const
    {
        return CIMObjectPath(hostName, ns, given.getClassName(), given.getKeyBindings());
    }

    void completeInstancePath(CIMInstance& instance, const CIMNamespaceName& ns) const
    {
        CIMObjectPath path = instance.getPath();
        bool incomplete = path.getClassName().isNull() || path.getKeyBindings().size() == 0;
        bool changed = false;
        if (incomplete && repo.classExists(ns, instance.getClassName()))
        {
            CIMClass cls = repo.getClass(ns, instance.getClassName(), false, true, false,
                                         CIMPropertyList());
            try
            {
                path = instance.buildPath(cls);
                changed = true;
            }
            catch (const Exception&)
            {
                // Keys missing from the instance: leave the path empty.
            }
        }
        if (!path.getClassName().isNull())
        {
            changed = completePath(path, hostName, ns) || changed;
            // The instance may still be the provider's: copied before a change.
            if (changed)
            {
                instance = Sdk::exclusiveInstance(instance);
                instance.setPath(path);
            }
        }
    }

    // Association classes registered in ns whose providers can answer for
    // an object of objectClass: the class matches the filter and one of its
    // references (the one named role, when given) can point at the object.
    // The instance providers of a class and of every subclass, each to be
    // called with its own class name.
    std::vector<Registration> instanceProvidersFor(const CIMNamespaceName& ns,
                                                   const CIMName& className) const
    {
        Array<CIMName> classes;
        classes.append(className);
        classes.appendArray(repo.getSubClassNames(ns, className, true));
        std::vector<Registration> result;
        for (Uint32 c = 0; c < classes.size(); c++)
        {
            if (const Registration* reg = registry.find(KindInstance, ns, classes[c]))
            {
                result.push_back(Registration{reg->provider, classes[c]});
            }
        }
        return result;
    }

    // The role is the provider's to judge, not a reason to skip one.
    std::vector<Registration> associationsFor(const CIMNamespaceName& ns,
                                              const CIMName& objectClass,
                                              const CIMName& assocFilter) const
    {
        std::vector<Registration> result;
        for (const Registration& reg : registry.associationProviders(ns))
        {
            if (!repo.classExists(ns, reg.className))
            {
                continue;
            }
            if (!assocFilter.isNull() && !repo.isSubClassOf(ns, reg.className, assocFilter))
            {
                continue;
            }
            CIMClass cls = repo.getClass(ns, reg.className, false, false, false, CIMPropertyList());
            bool referencesObject = false;
            for (Uint32 i = 0; i < cls.getPropertyCount() && !referencesObject; i++)
            {
                CIMConstProperty property = cls.getProperty(i);
                if (property.getType() != CIMTYPE_REFERENCE)
                {
                    continue;
                }
                referencesObject =
                    repo.isSubClassOf(ns, objectClass, property.getReferenceClassName());
            }
            if (referencesObject)
            {
                result.push_back(reg);
            }
        }
        return result;
    }

    bool classMatches(const CIMNamespaceName& ns, const CIMName& actual,
                      const CIMName& filter) const
    {
        return filter.isNull() || repo.isSubClassOf(ns, actual, filter);
    }

    Array<CIMObject> finishObjects(const Array<CIMObject>& objects, const CIMNamespaceName& ns,
                                   const CIMName& resultClass, const InstanceFilter& filter) const
    {
        Array<CIMObject> result;
        for (Uint32 i = 0; i < objects.size(); i++)
        {
            const CIMObject& object = objects[i];
            if (!classMatches(ns, object.getClassName(), resultClass))
            {
                continue;
            }
            if (!object.isInstance())
            {
                result.append(object);
                continue;
            }
            CIMInstance instance = filterInstance(CIMInstance(object), filter);
            completeInstancePath(instance, ns);
            result.append(CIMObject(instance));
        }
        return result;
    }

    Array<CIMObjectPath> finishPaths(const Array<CIMObjectPath>& paths,
                                     const CIMNamespaceName& ns, const CIMName& resultClass) const
    {
        Array<CIMObjectPath> result;
        for (Uint32 i = 0; i < paths.size(); i++)
        {
            CIMObjectPath path = paths[i];
            if (!classMatches(ns, path.getClassName(), resultClass))
            {
                continue;
            }
            completePath(path, hostName, ns);
            result.append(path);
        }
        return result;
    }
};

ObjectManager::ObjectManager() : _impl(new Impl(*this))
{
    cimrepo::MofCompiler compiler(_impl->repo);
    compiler.compileString(QUALIFIERS_MOF, "qualifiers.mof", INTEROP_NAMESPACE);
    compiler.compileString(CORE_CLASSES_MOF, "CIM_Core.mof", INTEROP_NAMESPACE);
    compiler.compileString(REGISTRATION_CLASSES_MOF, "PG_ProviderRegistration.mof",
                           INTEROP_NAMESPACE);
}

ObjectManager::~ObjectManager()
{
    shutdown();
    if (Sdk::getLocalDispatcher() == this)
    {
        Sdk::setLocalDispatcher(nullptr);
    }
}

void ObjectManager::loadMofFile(const std::string& path, const CIMNamespaceName& ns)
{
    cimrepo::MofCompiler compiler(_impl->repo);
    compiler.compileFile(path, ns);
}

void ObjectManager::loadRegistrationFile(const std::string& path)
{
    cimrepo::MofCompiler compiler(_impl->repo);
    compiler.compileFile(path, INTEROP_NAMESPACE);
    std::vector<CIMInstance> instances;
    for (const cimrepo::MofInstance& declared : compiler.instances())
    {
        instances.push_back(declared.instance);
    }
    _impl->registry.registerInstances(instances, path);
    _impl->registrationInstances.insert(_impl->registrationInstances.end(), instances.begin(),
                                        instances.end());
}

void ObjectManager::addBuiltInModule(const std::string& moduleName, BuiltInFactory create,
                                     const std::vector<CIMInstance>& registration)
{
    _impl->registry.addBuiltInModule(moduleName, std::move(create));
    _impl->registry.registerInstances(registration, "built-in module " + moduleName);
}

std::vector<CIMInstance> ObjectManager::registrationInstances() const
{
    return _impl->registrationInstances;
}

void ObjectManager::loadManifest(const std::string& manifestPath, const std::string& baseDir)
{
    std::ifstream in(manifestPath);
    if (!in)
    {
        throw CIMException(CIM_ERR_FAILED,
                           String(("cannot read load manifest " + manifestPath).c_str()));
    }
    std::string line;
    int lineNumber = 0;
    while (std::getline(in, line))
    {
        ++lineNumber;
        std::string::size_type hash = line.find('#');
        if (hash != std::string::npos)
        {
            line.erase(hash);
        }
        std::istringstream fields(line);
        std::string target, file, extra;
        if (!(fields >> target))
        {
            continue;
        }
        const std::string where = manifestPath + ":" + std::to_string(lineNumber);
        if (!(fields >> file) || (fields >> extra))
        {
            _impl->errors.add(where + ": expected \"<namespace or registration> <path>\"");
            continue;
        }
        const std::string path = (file[0] == '/' || baseDir.empty()) ? file : baseDir + "/" + file;
        // One broken file is reported and skipped so the rest still serves.
        try
        {
            if (target == "registration")
            {
                loadRegistrationFile(path);
            }
            else
            {
                loadMofFile(path, CIMNamespaceName(String(target.c_str())));
            }
        }
        catch (const cimrepo::MofError& e)
        {
            _impl->errors.add(e.what());
        }
        catch (const Exception& e)
        {
            _impl->errors.add(where + ": " + toStd(e.getMessage()));
        }
        catch (const std::exception& e)
        {
            _impl->errors.add(where + ": " + e.what());
        }
    }
}

void ObjectManager::addModuleSearchPath(const std::string& dir)
{
    _impl->registry.addSearchPath(dir);
}

void ObjectManager::setHostName(const String& hostName)
{
    _impl->hostName = hostName;
}

String ObjectManager::getHostName() const
{
    return _impl->hostName;
}

void ObjectManager::makeLocal()
{
    Sdk::setLocalDispatcher(this);
}

CIMOMHandle ObjectManager::handle()
{
    return _impl->handle;
}

void ObjectManager::shutdown()
{
    std::lock_guard<std::mutex> lock(_impl->shutdownMutex);
    if (_impl->shutDown)
    {
        return;
    }
    _impl->registry.terminateAll();
    _impl->shutDown = true;
}

std::vector<std::string> ObjectManager::loadErrors() const
{
    return _impl->errors.lines();
}

const cimrepo::ClassRepository& ObjectManager::repository() const
{
    return _impl->repo;
}

Array<CIMParamValue> ObjectManager::typeMethodParameters(const CIMNamespaceName& nameSpace,
                                                         const CIMName& className,
                                                         const CIMName& methodName,
                                                         const Array<CIMParamValue>& in) const
{
    return translated([&]() {
        _impl->checkClass(nameSpace, className);
        CIMClass cls =
            _impl->repo.getClass(nameSpace, className, false, true, false, CIMPropertyList());
        Uint32 pos = methodName.isNull() ? PEG_NOT_FOUND : cls.findMethod(methodName);
        if (pos == PEG_NOT_FOUND)
        {
            throw CIMException(CIM_ERR_METHOD_NOT_AVAILABLE,
                               methodName.isNull() ? String() : methodName.getString());
        }
        return typeInParameters(cls.getMethod(pos), in);
    });
}

CIMClass ObjectManager::getClass(const OperationContext&, const CIMNamespaceName& nameSpace,
                                 const CIMName& className, Boolean localOnly,
                                 Boolean includeQualifiers, Boolean includeClassOrigin,
                                 const CIMPropertyList& propertyList)
{
    return translated([&]() {
        _impl->checkNamespace(nameSpace);
        return _impl->repo.getClass(nameSpace, className, localOnly, includeQualifiers,
                                    includeClassOrigin, propertyList);
    });
}

Array<CIMClass> ObjectManager::enumerateClasses(const OperationContext&,
                                                const CIMNamespaceName& nameSpace,
                                                const CIMName& className,
                                                Boolean deepInheritance, Boolean localOnly,
                                                Boolean includeQualifiers,
                                                Boolean includeClassOrigin)
{
    return translated([&]() {
        _impl->checkNamespace(nameSpace);
        if (!className.isNull())
        {
            _impl->checkClass(nameSpace, className);
        }
        return _impl->repo.enumerateClasses(nameSpace, className, deepInheritance, localOnly,
                                            includeQualifiers, includeClassOrigin);
    });
}

Array<CIMName> ObjectManager::enumerateClassNames(const OperationContext&,
                                                  const CIMNamespaceName& nameSpace,
                                                  const CIMName& className,
                                                  Boolean deepInheritance)
{
    return translated([&]() {
        _impl->checkNamespace(nameSpace);
        if (!className.isNull())
        {
            _impl->checkClass(nameSpace, className);
        }
        return _impl->repo.enumerateClassNames(nameSpace, className, deepInheritance);
    });
}

CIMInstance ObjectManager::getInstance(const OperationContext& context,
                                       const CIMNamespaceName& nameSpace,
                                       const CIMObjectPath& instanceName, Boolean localOnly,
                                       Boolean includeQualifiers, Boolean includeClassOrigin,
                                       const CIMPropertyList& propertyList)
{
    return translated([&]() {
        const CIMName className = instanceName.getClassName();
        _impl->checkClass(nameSpace, className);
        const Registration* reg = _impl->registry.find(KindInstance, nameSpace, className);
        if (!reg)
        {
            throw CIMException(CIM_ERR_NOT_FOUND,
                               "no instance " + instanceName.toString() + " (class " +
                                   className.getString() + " has no provider)");
        }
        Array<CIMInstance> found;
        forEachProvider({*reg}, _impl->handle, _impl->errors,
                        [&](ProviderCall& call, const Registration&) {
                            InstanceCollector collector(call.name(), "getInstance");
                            call.as<CIMInstanceProvider>("an instance")
                                .getInstance(withIdentity(context),
                                             _impl->requestPath(nameSpace, instanceName),
                                             includeQualifiers, includeClassOrigin, propertyList,
                                             collector);
                            found = collector.results;
                        });
        if (found.size() == 0)
        {
            throw CIMException(CIM_ERR_NOT_FOUND,
                               "no instance " + instanceName.toString());
        }

        // As OpenPegasus does, localOnly is ignored on instances: every
        // instance carries what it inherits.
        (void)localOnly;
        InstanceFilter filter;
        filter.propertyList = propertyList;
        filter.includeQualifiers = includeQualifiers;
        filter.includeClassOrigin = includeClassOrigin;

        CIMInstance instance = filterInstance(found[0], filter);
        _impl->completeInstancePath(instance, nameSpace);
        if (instance.getPath().getClassName().isNull())
        {
            CIMObjectPath path = instanceName;
            completePath(path, _impl->hostName, nameSpace);
            instance.setPath(path);
        }
        return instance;
    });
}

Array<CIMInstance> ObjectManager::enumerateInstances(const OperationContext& context,
                                                     const CIMNamespaceName& nameSpace,
                                                     const CIMName& className,
                                                     Boolean deepInheritance, Boolean localOnly,
                                                     Boolean includeQualifiers,
                                                     Boolean includeClassOrigin,
                                                     const CIMPropertyList& propertyList)
{
    // The result holds what was delivered; a request's hold must not keep
    // a copy past this call (a provider reaching other classes through its
    // handle would otherwise keep the last of them alive to the answer's end).
    ReleaseAfterAnswer notPastThisCall;
    Array<CIMInstance> result;
    enumerateInstances(context, nameSpace, className, deepInheritance, localOnly,
                       includeQualifiers, includeClassOrigin, propertyList,
                       [&](const CIMInstance& instance) { result.append(instance); });
    return result;
}

void ObjectManager::enumerateInstances(const OperationContext& context,
                                       const CIMNamespaceName& nameSpace,
                                       const CIMName& className, Boolean deepInheritance,
                                       Boolean localOnly, Boolean includeQualifiers,
                                       Boolean includeClassOrigin,
                                       const CIMPropertyList& propertyList,
                                       const InstanceSink& sink)
{
    translated([&]() {
        _impl->checkClass(nameSpace, className);
        const OperationContext providerContext = withIdentity(context);

        // localOnly is ignored, as OpenPegasus does; without deepInheritance,
        // subclass instances keep only the requested class's properties.
        (void)localOnly;
        std::map<std::string, NameSet> allowedByClass;
        auto allowedFor = [&](const CIMName& instanceClass) -> const NameSet* {
            CIMName basis = className;
            if (deepInheritance && _impl->repo.classExists(nameSpace, instanceClass))
            {
                basis = instanceClass;
            }
            std::string key = lower(basis.getString());
            auto it = allowedByClass.find(key);
            if (it == allowedByClass.end())
            {
                it = allowedByClass.emplace(key, _impl->propertyNames(nameSpace, basis)).first;
            }
            return &it->second;
        };

        forEachProvider(
            _impl->instanceProvidersFor(nameSpace, className), _impl->handle, _impl->errors,
            [&](ProviderCall& call, const Registration& reg) {
                InstanceCollector collector(call.name(), "enumerateInstances");
                // Each instance is narrowed and handed on as it is delivered,
                // so nothing here holds the whole enumeration.
                InstanceFilter filter;
                filter.propertyList = propertyList;
                filter.includeQualifiers = includeQualifiers;
                filter.includeClassOrigin = includeClassOrigin;
                CIMName filterClass;
                collector.releaseAfterAnswer = true;
                collector.forward = [&](const CIMInstance& delivered) {
                    // The class's rules are looked up when the class changes.
                    if (filterClass.isNull() || !filterClass.equal(delivered.getClassName()))
                    {
                        filterClass = delivered.getClassName();
                        filter.classProperties = allowedFor(filterClass);
                        filter.forgetDecisions();
                    }
                    CIMInstance instance = filterInstance(delivered, filter);
                    _impl->completeInstancePath(instance, nameSpace);
                    sink(instance);
                };
                call.as<CIMInstanceProvider>("an instance")
                    .enumerateInstances(providerContext,
                                        CIMObjectPath(_impl->hostName, nameSpace, reg.className,
                                                      Array<CIMKeyBinding>()),
                                        includeQualifiers, includeClassOrigin, propertyList,
                                        collector);
            });
        return 0;
    });
}

Array<CIMObjectPath> ObjectManager::enumerateInstanceNames(const OperationContext& context,
                                                           const CIMNamespaceName& nameSpace,
                                                           const CIMName& className)
{
    Array<CIMObjectPath> result;
    enumerateInstanceNames(context, nameSpace, className,
                           [&](const CIMObjectPath& path) { result.append(path); });
    return result;
}

void ObjectManager::enumerateInstanceNames(const OperationContext& context,
                                           const CIMNamespaceName& nameSpace,
                                           const CIMName& className, const PathSink& sink)
{
    translated([&]() {
        _impl->checkClass(nameSpace, className);
        const OperationContext providerContext = withIdentity(context);
        forEachProvider(
            _impl->instanceProvidersFor(nameSpace, className), _impl->handle, _impl->errors,
            [&](ProviderCall& call, const Registration& reg) {
                ObjectPathCollector collector(call.name(), "enumerateInstanceNames");
                collector.forward = [&](const CIMObjectPath& delivered) {
                    CIMObjectPath path = delivered;
                    completePath(path, _impl->hostName, nameSpace);
                    sink(path);
                };
                call.as<CIMInstanceProvider>("an instance")
                    .enumerateInstanceNames(providerContext,
                                            CIMObjectPath(_impl->hostName, nameSpace,
                                                          reg.className, Array<CIMKeyBinding>()),
                                            collector);
            });
        return 0;
    });
}

Array<CIMObject> ObjectManager::associators(const OperationContext& context,
                                            const CIMNamespaceName& nameSpace,
                                            const CIMObjectPath& objectName,
                                            const CIMName& assocClass,
                                            const CIMName& resultClass, const String& role,
                                            const String& resultRole, Boolean includeQualifiers,
                                            Boolean includeClassOrigin,
                                            const CIMPropertyList& propertyList)
{
    return translated([&]() {
        _impl->checkAssociationRequest(nameSpace, objectName, role, &resultRole);
        if (objectName.getKeyBindings().size() == 0)
        {
            std::vector<CIMName> names;
            for (const auto& a : _impl->classAssociations(nameSpace, objectName.getClassName(),
                                                          assocClass, resultClass, role,
                                                          resultRole))
            {
                names.push_back(a.resultClass);
            }
            return _impl->classObjects(nameSpace, _impl->classPaths(nameSpace, names),
                                       includeQualifiers, includeClassOrigin, propertyList);
        }
        Array<CIMObject> result;
        const OperationContext providerContext = withIdentity(context);
        const CIMObjectPath object = _impl->requestPath(nameSpace, objectName);

        InstanceFilter filter;
        filter.propertyList = propertyList;
        filter.includeQualifiers = includeQualifiers;
        filter.includeClassOrigin = includeClassOrigin;

        forEachProvider(
            _impl->associationsFor(nameSpace, objectName.getClassName(), assocClass),
            _impl->handle, _impl->errors, [&](ProviderCall& call, const Registration& reg) {
                ObjectCollector collector(call.name(), "associators");
                call.as<CIMAssociationProvider>("an association")
                    .associators(providerContext, object, reg.className, resultClass, role,
                                 resultRole, includeQualifiers, includeClassOrigin, propertyList,
                                 collector);
                result.appendArray(
                    _impl->finishObjects(collector.results, nameSpace, resultClass, filter));
            });
        return result;
    });
}

Array<CIMObjectPath> ObjectManager::associatorNames(const OperationContext& context,
                                                    const CIMNamespaceName& nameSpace,
                                                    const CIMObjectPath& objectName,
                                                    const CIMName& assocClass,
                                                    const CIMName& resultClass,
                                                    const String& role, const String& resultRole)
{
    return translated([&]() {
        _impl->checkAssociationRequest(nameSpace, objectName, role, &resultRole);
        if (objectName.getKeyBindings().size() == 0)
        {
            std::vector<CIMName> names;
            for (const auto& a : _impl->classAssociations(nameSpace, objectName.getClassName(),
                                                          assocClass, resultClass, role,
                                                          resultRole))
            {
                names.push_back(a.resultClass);
            }
            return _impl->classPaths(nameSpace, names);
        }
        Array<CIMObjectPath> result;
        const OperationContext providerContext = withIdentity(context);
        const CIMObjectPath object = _impl->requestPath(nameSpace, objectName);

        forEachProvider(
            _impl->associationsFor(nameSpace, objectName.getClassName(), assocClass),
            _impl->handle, _impl->errors, [&](ProviderCall& call, const Registration& reg) {
                ObjectPathCollector collector(call.name(), "associatorNames");
                call.as<CIMAssociationProvider>("an association")
                    .associatorNames(providerContext, object, reg.className, resultClass, role,
                                     resultRole, collector);
                result.appendArray(_impl->finishPaths(collector.results, nameSpace, resultClass));
            });
        return result;
    });
}

Array<CIMObject> ObjectManager::references(const OperationContext& context,
                                           const CIMNamespaceName& nameSpace,
                                           const CIMObjectPath& objectName,
                                           const CIMName& resultClass, const String& role,
                                           Boolean includeQualifiers, Boolean includeClassOrigin,
                                           const CIMPropertyList& propertyList)
{
    return translated([&]() {
        _impl->checkAssociationRequest(nameSpace, objectName, role, nullptr);
        if (objectName.getKeyBindings().size() == 0)
        {
            std::vector<CIMName> names;
            for (const auto& a : _impl->classAssociations(nameSpace, objectName.getClassName(),
                                                          resultClass, CIMName(), role, String()))
            {
                names.push_back(a.assocClass);
            }
            return _impl->classObjects(nameSpace, _impl->classPaths(nameSpace, names),
                                       includeQualifiers, includeClassOrigin, propertyList);
        }
        Array<CIMObject> result;
        const OperationContext providerContext = withIdentity(context);
        const CIMObjectPath object = _impl->requestPath(nameSpace, objectName);

        InstanceFilter filter;
        filter.propertyList = propertyList;
        filter.includeQualifiers = includeQualifiers;
        filter.includeClassOrigin = includeClassOrigin;

        forEachProvider(
            _impl->associationsFor(nameSpace, objectName.getClassName(), resultClass),
            _impl->handle, _impl->errors, [&](ProviderCall& call, const Registration& reg) {
                ObjectCollector collector(call.name(), "references");
                call.as<CIMAssociationProvider>("an association")
                    .references(providerContext, object, reg.className, role, includeQualifiers,
                                includeClassOrigin, propertyList, collector);
                result.appendArray(
                    _impl->finishObjects(collector.results, nameSpace, resultClass, filter));
            });
        return result;
    });
}

Array<CIMObjectPath> ObjectManager::referenceNames(const OperationContext& context,
                                                   const CIMNamespaceName& nameSpace,
                                                   const CIMObjectPath& objectName,
                                                   const CIMName& resultClass,
                                                   const String& role)
{
    return translated([&]() {
        _impl->checkAssociationRequest(nameSpace, objectName, role, nullptr);
        if (objectName.getKeyBindings().size() == 0)
        {
            std::vector<CIMName> names;
            for (const auto& a : _impl->classAssociations(nameSpace, objectName.getClassName(),
                                                          resultClass, CIMName(), role, String()))
            {
                names.push_back(a.assocClass);
            }
            return _impl->classPaths(nameSpace, names);
        }
        Array<CIMObjectPath> result;
        const OperationContext providerContext = withIdentity(context);
        const CIMObjectPath object = _impl->requestPath(nameSpace, objectName);

        forEachProvider(
            _impl->associationsFor(nameSpace, objectName.getClassName(), resultClass),
            _impl->handle, _impl->errors, [&](ProviderCall& call, const Registration& reg) {
                ObjectPathCollector collector(call.name(), "referenceNames");
                call.as<CIMAssociationProvider>("an association")
                    .referenceNames(providerContext, object, reg.className, role, collector);
                result.appendArray(_impl->finishPaths(collector.results, nameSpace, resultClass));
            });
        return result;
    });
}

CIMValue ObjectManager::invokeMethod(const OperationContext& context,
                                     const CIMNamespaceName& nameSpace,
                                     const CIMObjectPath& instanceName,
                                     const CIMName& methodName,
                                     const Array<CIMParamValue>& inParameters,
                                     Array<CIMParamValue>& outParameters)
{
    return translated([&]() {
        const CIMName className = instanceName.getClassName();
        Array<CIMParamValue> typed =
            typeMethodParameters(nameSpace, className, methodName, inParameters);
        const Registration* reg = _impl->registry.find(KindMethod, nameSpace, className);
        if (!reg)
        {
            throw CIMException(CIM_ERR_NOT_SUPPORTED,
                               "method " + methodName.getString() + " of class " +
                                   className.getString() + " has no provider");
        }
        CIMValue returnValue;
        forEachProvider({*reg}, _impl->handle, _impl->errors,
                        [&](ProviderCall& call, const Registration&) {
                            MethodResultCollector collector(call.name(), "invokeMethod");
                            call.as<CIMMethodProvider>("a method")
                                .invokeMethod(withIdentity(context),
                                              _impl->requestPath(nameSpace, instanceName),
                                              methodName, typed, collector);
                            outParameters = collector.outParameters;
                            returnValue = collector.returnValue;
                        });
        return returnValue;
    });
}

namespace
{
// The instance provider that answers changes to instances of one class: its
// own refusal is the answer, as in OpenPegasus; a class without one cannot
// change.
const Registration& changeProvider(const ProviderRegistry& registry,
                                   const CIMNamespaceName& nameSpace, const CIMName& className,
                                   const char* operation)
{
    const Registration* reg = registry.find(KindInstance, nameSpace, className);
    if (!reg)
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
                           String(operation) + " of " + className.getString());
    }
    return *reg;
}
} // namespace

CIMObjectPath ObjectManager::createInstance(const OperationContext& context,
                                            const CIMNamespaceName& nameSpace,
                                            const CIMInstance& newInstance)
{
    return translated([&]() {
        const CIMName className = newInstance.getClassName();
        _impl->checkClass(nameSpace, className);
        const Registration& reg =
            changeProvider(_impl->registry, nameSpace, className, "createInstance");
        CIMObjectPath target = newInstance.getPath();
        if (target.getClassName().isNull())
        {
            target.setClassName(className);
        }
        target = _impl->requestPath(nameSpace, target);
        CIMObjectPath created;
        forEachProvider({reg}, _impl->handle, _impl->errors,
                        [&](ProviderCall& call, const Registration&) {
                            ObjectPathCollector collector(call.name(), "createInstance");
                            call.as<CIMInstanceProvider>("an instance")
                                .createInstance(withIdentity(context), target, newInstance,
                                                collector);
                            if (collector.results.size() > 0)
                            {
                                created = collector.results[0];
                            }
                        });
        if (!created.getClassName().isNull())
        {
            completePath(created, _impl->hostName, nameSpace);
        }
        return created;
    });
}

void ObjectManager::modifyInstance(const OperationContext& context,
                                   const CIMNamespaceName& nameSpace,
                                   const CIMInstance& modifiedInstance, Boolean includeQualifiers,
                                   const CIMPropertyList& propertyList)
{
    translated([&]() {
        CIMObjectPath path = modifiedInstance.getPath();
        const CIMName className =
            path.getClassName().isNull() ? modifiedInstance.getClassName() : path.getClassName();
        _impl->checkClass(nameSpace, className);
        const Registration& reg =
            changeProvider(_impl->registry, nameSpace, className, "modifyInstance");
        forEachProvider({reg}, _impl->handle, _impl->errors,
                        [&](ProviderCall& call, const Registration&) {
                            CompletionCollector collector(call.name(), "modifyInstance");
                            call.as<CIMInstanceProvider>("an instance")
                                .modifyInstance(withIdentity(context),
                                                _impl->requestPath(nameSpace, path),
                                                modifiedInstance, includeQualifiers, propertyList,
                                                collector);
                        });
        return 0;
    });
}

void ObjectManager::deleteInstance(const OperationContext& context,
                                   const CIMNamespaceName& nameSpace,
                                   const CIMObjectPath& instanceName)
{
    translated([&]() {
        const CIMName className = instanceName.getClassName();
        _impl->checkClass(nameSpace, className);
        const Registration& reg =
            changeProvider(_impl->registry, nameSpace, className, "deleteInstance");
        forEachProvider({reg}, _impl->handle, _impl->errors,
                        [&](ProviderCall& call, const Registration&) {
                            CompletionCollector collector(call.name(), "deleteInstance");
                            call.as<CIMInstanceProvider>("an instance")
                                .deleteInstance(withIdentity(context),
                                                _impl->requestPath(nameSpace, instanceName),
                                                collector);
                        });
        return 0;
    });
}

CIMValue ObjectManager::getProperty(const OperationContext& context,
                                    const CIMNamespaceName& nameSpace,
                                    const CIMObjectPath& instanceName,
                                    const CIMName& propertyName)
{
    Array<CIMName> names;
    names.append(propertyName);
    CIMInstance instance = getInstance(context, nameSpace, instanceName, false, false, false,
                                       CIMPropertyList(names));
    Uint32 pos = instance.findProperty(propertyName);
    if (pos == PEG_NOT_FOUND)
    {
        throw CIMException(CIM_ERR_NO_SUCH_PROPERTY, propertyName.getString());
    }
    return instance.getProperty(pos).getValue();
}

void ObjectManager::setProperty(const OperationContext& context,
                                const CIMNamespaceName& nameSpace,
                                const CIMObjectPath& instanceName, const CIMName& propertyName,
                                const CIMValue& newValue)
{
    const CIMName className = instanceName.getClassName();
    CIMValue value = newValue;
    translated([&]() {
        _impl->checkClass(nameSpace, className);
        CIMClass cls =
            _impl->repo.getClass(nameSpace, className, false, false, false, CIMPropertyList());
        Uint32 pos = cls.findProperty(propertyName);
        if (pos == PEG_NOT_FOUND)
        {
            throw CIMException(CIM_ERR_NO_SUCH_PROPERTY, propertyName.getString());
        }
        // A client's text takes the type the class declares.
        CIMConstProperty declared = cls.getProperty(pos);
        if (!value.isNull() && value.getType() == CIMTYPE_STRING &&
            declared.getType() != CIMTYPE_STRING)
        {
            value = convertTextValue(value, declared.getType(), declared.isArray(),
                                     propertyName.getString());
        }
        return 0;
    });
    CIMInstance instance(className);
    instance.addProperty(CIMProperty(propertyName, value));
    instance.setPath(instanceName);
    Array<CIMName> names;
    names.append(propertyName);
    modifyInstance(context, nameSpace, instance, false, CIMPropertyList(names));
}

} // namespace cimom
