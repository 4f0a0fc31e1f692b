#include <cimom/InteropProvider.h>
#include <cimom/ObjectManager.h>

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Provider/ProviderException.h>

#include <cstdio>

PEGASUS_USING_PEGASUS;

namespace cimom
{

const char* const InteropProvider::MODULE_NAME = "cimom_InteropModule";
const char* const InteropProvider::PROVIDER_NAME = "cimom_InteropProvider";

namespace
{

const CIMNamespaceName REGISTRATION_NAMESPACE("root/PG_InterOp");

const CIMName COMPUTER_SYSTEM("CIM_ComputerSystem");
const CIMName OBJECT_MANAGER("CIM_ObjectManager");
const CIMName NAMESPACE("CIM_Namespace");
const CIMName CIMXML_MECHANISM("CIM_CIMXMLCommunicationMechanism");
const CIMName REGISTERED_PROFILE("CIM_RegisteredProfile");
const CIMName HOSTED_SERVICE("CIM_HostedService");
const CIMName NAMESPACE_IN_MANAGER("CIM_NamespaceInManager");
const CIMName COMM_MECHANISM_FOR_MANAGER("CIM_CommMechanismForManager");
const CIMName ELEMENT_CONFORMS("CIM_ElementConformsToProfile");
const CIMName REFERENCED_PROFILE("CIM_ReferencedProfile");

const char* const OBJECT_MANAGER_NAME = "orv-cimserver";
const Uint16 NOT_ADVERTISED = 2;
const Uint16 CIM_XML = 2;
const Uint16 BASIC_AUTHENTICATION = 3;
const Uint16 BASIC_READ = 2;
const Uint16 ASSOCIATION_TRAVERSAL = 6;
const Uint16 ENABLED = 2;
const Uint16 STATUS_OK = 2;
const Uint16 CLASS_TYPE_CIM = 2;

// The two references of each association served, in the order
// (antecedent-like end, dependent-like end).
struct Roles
{
    CIMName association;
    const char* left;
    const char* right;
};

const Roles ASSOCIATION_ROLES[] = {
    {HOSTED_SERVICE, "Antecedent", "Dependent"},
    {NAMESPACE_IN_MANAGER, "Antecedent", "Dependent"},
    {COMM_MECHANISM_FOR_MANAGER, "Antecedent", "Dependent"},
    {ELEMENT_CONFORMS, "ConformantStandard", "ManagedElement"},
    {REFERENCED_PROFILE, "Antecedent", "Dependent"},
};

const Roles* rolesOf(const CIMName& association)
{
    for (const Roles& roles : ASSOCIATION_ROLES)
    {
        if (roles.association.equal(association))
        {
            return &roles;
        }
    }
    return nullptr;
}

void set(CIMInstance& instance, const char* name, const CIMValue& value)
{
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos != PEG_NOT_FOUND)
    {
        instance.getProperty(pos).setValue(value);
    }
}

Array<Uint16> uint16s(std::initializer_list<Uint16> values)
{
    Array<Uint16> result;
    for (Uint16 v : values)
    {
        result.append(v);
    }
    return result;
}

CIMObjectPath referenceOf(const CIMInstance& instance, const String& role)
{
    Uint32 pos = instance.findProperty(CIMName(role));
    CIMObjectPath path;
    if (pos != PEG_NOT_FOUND && !instance.getProperty(pos).getValue().isNull())
    {
        instance.getProperty(pos).getValue().get(path);
    }
    return path;
}

// Same class and same keys; host and namespace do not count, since clients
// name our objects with whatever host they reached us by.
bool samePath(const CIMObjectPath& a, const CIMObjectPath& b)
{
    if (!a.getClassName().equal(b.getClassName()))
    {
        return false;
    }
    Array<CIMKeyBinding> ka = a.getKeyBindings();
    Array<CIMKeyBinding> kb = b.getKeyBindings();
    if (ka.size() != kb.size())
    {
        return false;
    }
    for (Uint32 i = 0; i < ka.size(); i++)
    {
        bool found = false;
        for (Uint32 j = 0; j < kb.size() && !found; j++)
        {
            found = ka[i].getName().equal(kb[j].getName()) && ka[i].getValue() == kb[j].getValue();
        }
        if (!found)
        {
            return false;
        }
    }
    return true;
}

bool isInterop(const CIMNamespaceName& ns)
{
    for (const CIMNamespaceName& interop : InteropProvider::interopNamespaces())
    {
        if (ns.equal(interop))
        {
            return true;
        }
    }
    return false;
}

} // namespace

InteropProvider::InteropProvider(const InteropSettings& settings,
                                 const std::vector<CIMInstance>& registration,
                                 const std::vector<CIMNamespaceName>& namespaces)
    : _settings(settings), _registration(registration), _namespaces(namespaces)
{
}

std::vector<CIMNamespaceName> InteropProvider::interopNamespaces()
{
    return {CIMNamespaceName("interop"), CIMNamespaceName("root/interop"), REGISTRATION_NAMESPACE};
}

std::vector<std::pair<CIMName, bool>> InteropProvider::servedClasses()
{
    return {{COMPUTER_SYSTEM, false},     {OBJECT_MANAGER, false},
            {NAMESPACE, false},           {CIMXML_MECHANISM, false},
            {REGISTERED_PROFILE, false},  {HOSTED_SERVICE, true},
            {NAMESPACE_IN_MANAGER, true}, {COMM_MECHANISM_FOR_MANAGER, true},
            {ELEMENT_CONFORMS, true},     {REFERENCED_PROFILE, true}};
}

void InteropProvider::install(ObjectManager& om, const InteropSettings& settings)
{
    std::vector<CIMInstance> registration;
    CIMInstance provider(CIMName("PG_Provider"));
    provider.addProperty(CIMProperty(CIMName("ProviderModuleName"), String(MODULE_NAME)));
    provider.addProperty(CIMProperty(CIMName("Name"), String(PROVIDER_NAME)));
    registration.push_back(provider);

    Array<String> namespaces;
    for (const CIMNamespaceName& ns : interopNamespaces())
    {
        namespaces.append(ns.getString());
    }
    for (const auto& served : servedClasses())
    {
        CIMInstance caps(CIMName("PG_ProviderCapabilities"));
        caps.addProperty(CIMProperty(CIMName("ProviderModuleName"), String(MODULE_NAME)));
        caps.addProperty(CIMProperty(CIMName("ProviderName"), String(PROVIDER_NAME)));
        caps.addProperty(CIMProperty(CIMName("CapabilityID"), served.first.getString()));
        caps.addProperty(CIMProperty(CIMName("ClassName"), served.first.getString()));
        caps.addProperty(CIMProperty(CIMName("Namespaces"), namespaces));
        caps.addProperty(
            CIMProperty(CIMName("ProviderType"), served.second ? uint16s({2, 3}) : uint16s({2})));
        registration.push_back(caps);
    }

    // Registration and namespaces are read when the provider is first
    // needed, by which time loading is over.
    ObjectManager* manager = &om;
    om.addBuiltInModule(
        MODULE_NAME,
        [manager, settings](const String& name) -> CIMProvider*
        {
            if (!String::equal(name, PROVIDER_NAME))
            {
                return nullptr;
            }
            Array<CIMNamespaceName> all = manager->repository().enumerateNamespaces();
            std::vector<CIMNamespaceName> namespaces(all.getData(), all.getData() + all.size());
            return new InteropProvider(settings, manager->registrationInstances(), namespaces);
        },
        registration);
}

void InteropProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    OperationContext none;
    auto definition = [&](const char* name)
    {
        return _cimom.getClass(none, REGISTRATION_NAMESPACE, CIMName(name), false, true, false,
                               CIMPropertyList());
    };
    _catalog = ProfileCatalog::build(_registration, definition("PG_ProviderProfileCapabilities"),
                                     definition("PG_ProviderReferencedProfiles"),
                                     definition("CIM_RegisteredProfile"));
    for (const std::string& problem : _catalog.problems())
    {
        std::fprintf(stderr, "interop: profile registration: %s\n", problem.c_str());
    }
}

void InteropProvider::terminate()
{
    delete this;
}

CIMInstance InteropProvider::_skeleton(const CIMNamespaceName& ns, const CIMName& className)
{
    CIMClass cls =
        _cimom.getClass(OperationContext(), ns, className, false, true, false, CIMPropertyList());
    return cls.buildInstance(false, false, CIMPropertyList());
}

CIMObjectPath InteropProvider::_pathOf(const CIMInstance& instance, const CIMNamespaceName& ns)
{
    CIMClass cls = _cimom.getClass(OperationContext(), ns, instance.getClassName(), false, true,
                                   false, CIMPropertyList());
    CIMObjectPath path = instance.buildPath(cls);
    path.setHost(_settings.hostName);
    path.setNameSpace(ns);
    return path;
}

std::vector<CIMInstance> InteropProvider::_instances(const OperationContext& context,
                                                     const CIMNamespaceName& ns,
                                                     const CIMName& className)
{
    std::vector<CIMInstance> result;
    auto add = [&](CIMInstance instance)
    {
        instance.setPath(_pathOf(instance, ns));
        result.push_back(instance);
    };
    auto systemKeys = [&](CIMInstance& instance)
    {
        set(instance, "SystemCreationClassName", COMPUTER_SYSTEM.getString());
        set(instance, "SystemName", _settings.hostName);
    };

    if (className.equal(COMPUTER_SYSTEM))
    {
        CIMInstance system = _skeleton(ns, className);
        set(system, "CreationClassName", COMPUTER_SYSTEM.getString());
        set(system, "Name", _settings.hostName);
        set(system, "ElementName", _settings.hostName);
        add(system);
    }
    else if (className.equal(OBJECT_MANAGER))
    {
        CIMInstance om = _skeleton(ns, className);
        systemKeys(om);
        set(om, "CreationClassName", OBJECT_MANAGER.getString());
        set(om, "Name", String(OBJECT_MANAGER_NAME));
        set(om, "ElementName", String(OBJECT_MANAGER_NAME));
        set(om, "Description", String("CIM server of the ORV block storage array"));
        set(om, "Started", CIMValue(Boolean(true)));
        set(om, "EnabledState", CIMValue(ENABLED));
        set(om, "OperationalStatus", CIMValue(uint16s({STATUS_OK})));
        set(om, "GatherStatisticalData", CIMValue(Boolean(false)));
        add(om);
    }
    else if (className.equal(NAMESPACE))
    {
        for (const CIMNamespaceName& served : _namespaces)
        {
            CIMInstance instance = _skeleton(ns, className);
            systemKeys(instance);
            set(instance, "ObjectManagerCreationClassName", OBJECT_MANAGER.getString());
            set(instance, "ObjectManagerName", String(OBJECT_MANAGER_NAME));
            set(instance, "CreationClassName", NAMESPACE.getString());
            set(instance, "Name", served.getString());
            set(instance, "ClassType", CIMValue(CLASS_TYPE_CIM));
            add(instance);
        }
    }
    else if (className.equal(CIMXML_MECHANISM))
    {
        const std::pair<const char*, Uint32> endpoints[] = {{"http", _settings.httpPort},
                                                            {"https", _settings.httpsPort}};
        for (const auto& endpoint : endpoints)
        {
            if (endpoint.second == 0)
            {
                continue;
            }
            CIMInstance instance = _skeleton(ns, className);
            systemKeys(instance);
            set(instance, "CreationClassName", CIMXML_MECHANISM.getString());
            set(instance, "Name",
                String(endpoint.first) + "://" + _settings.hostName + ":" +
                    CIMValue(endpoint.second).toString() + "/cimom");
            set(instance, "ElementName", String("CIM-XML over ") + endpoint.first);
            set(instance, "CommunicationMechanism", CIMValue(CIM_XML));
            set(instance, "Version", String("1.0"));
            set(instance, "MultipleOperationsSupported", CIMValue(Boolean(false)));
            set(instance, "AuthenticationMechanismsSupported",
                CIMValue(uint16s({BASIC_AUTHENTICATION})));
            set(instance, "FunctionalProfilesSupported",
                CIMValue(uint16s({BASIC_READ, ASSOCIATION_TRAVERSAL})));
            set(instance, "CIMValidated", CIMValue(Boolean(false)));
            set(instance, "EnabledState", CIMValue(ENABLED));
            set(instance, "OperationalStatus", CIMValue(uint16s({STATUS_OK})));
            add(instance);
        }
    }
    else if (className.equal(REGISTERED_PROFILE))
    {
        for (const ProfileRecord& profile : _catalog.profiles())
        {
            CIMInstance instance = _skeleton(ns, className);
            set(instance, "InstanceID", profile.instanceID);
            set(instance, "RegisteredOrganization", CIMValue(profile.organization));
            if (profile.organization == 1)
            {
                set(instance, "OtherRegisteredOrganization", profile.organizationName);
            }
            set(instance, "RegisteredName", profile.name);
            set(instance, "RegisteredVersion", profile.version);
            set(instance, "AdvertiseTypes", CIMValue(uint16s({NOT_ADVERTISED})));
            add(instance);
        }
    }
    else if (rolesOf(className))
    {
        return _associations(context, ns, className);
    }
    return result;
}

std::vector<CIMInstance> InteropProvider::_associations(const OperationContext& context,
                                                        const CIMNamespaceName& ns,
                                                        const CIMName& className)
{
    std::vector<std::pair<CIMObjectPath, CIMObjectPath>> pairs;
    auto pathsOf = [&](const CIMName& cls)
    {
        std::vector<CIMObjectPath> paths;
        for (const CIMInstance& instance : _instances(context, ns, cls))
        {
            paths.push_back(instance.getPath());
        }
        return paths;
    };
    auto pairEach = [&](const CIMName& left, const CIMName& right)
    {
        std::vector<CIMObjectPath> lefts = pathsOf(left);
        for (const CIMObjectPath& l : lefts)
        {
            for (const CIMObjectPath& r : pathsOf(right))
            {
                pairs.emplace_back(l, r);
            }
        }
    };
    auto profilePath = [&](const String& instanceID)
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("InstanceID"), instanceID, CIMKeyBinding::STRING));
        return CIMObjectPath(_settings.hostName, ns, REGISTERED_PROFILE, keys);
    };

    if (className.equal(HOSTED_SERVICE))
    {
        pairEach(COMPUTER_SYSTEM, OBJECT_MANAGER);
    }
    else if (className.equal(NAMESPACE_IN_MANAGER))
    {
        pairEach(OBJECT_MANAGER, NAMESPACE);
    }
    else if (className.equal(COMM_MECHANISM_FOR_MANAGER))
    {
        pairEach(OBJECT_MANAGER, CIMXML_MECHANISM);
    }
    else if (className.equal(ELEMENT_CONFORMS))
    {
        for (const ProfileRecord& profile : _catalog.profiles())
        {
            for (const ConformingClass& conforming : profile.conformingClasses)
            {
                // The caller's own rights decide what it may see there.
                Array<CIMObjectPath> elements = _cimom.enumerateInstanceNames(
                    context, conforming.nameSpace, conforming.className);
                for (Uint32 i = 0; i < elements.size(); i++)
                {
                    CIMObjectPath element = elements[i];
                    element.setNameSpace(conforming.nameSpace);
                    element.setHost(_settings.hostName);
                    pairs.emplace_back(profilePath(profile.instanceID), element);
                }
            }
        }
    }
    else if (className.equal(REFERENCED_PROFILE))
    {
        for (const ProfileReference& reference : _catalog.references())
        {
            // Only between profiles that are advertised here.
            if (_catalog.find(reference.antecedentID) && _catalog.find(reference.dependentID))
            {
                pairs.emplace_back(profilePath(reference.antecedentID),
                                   profilePath(reference.dependentID));
            }
        }
    }

    const Roles* roles = rolesOf(className);
    std::vector<CIMInstance> result;
    for (const auto& pair : pairs)
    {
        CIMInstance instance = _skeleton(ns, className);
        set(instance, roles->left, CIMValue(pair.first));
        set(instance, roles->right, CIMValue(pair.second));
        instance.setPath(_pathOf(instance, ns));
        result.push_back(instance);
    }
    return result;
}

std::vector<InteropProvider::Link> InteropProvider::_links(const OperationContext& context,
                                                           const CIMObjectPath& objectName,
                                                           const CIMName& associationClass,
                                                           const String& role,
                                                           const String& resultRole)
{
    std::vector<Link> links;
    const Roles* roles = rolesOf(associationClass);
    if (!roles)
    {
        return links;
    }
    const String ends[2] = {roles->left, roles->right};
    for (const CIMInstance& association :
         _associations(context, objectName.getNameSpace(), associationClass))
    {
        for (int from = 0; from < 2; from++)
        {
            const String& fromRole = ends[from];
            const String& toRole = ends[1 - from];
            if ((role.size() != 0 && !String::equalNoCase(role, fromRole)) ||
                (resultRole.size() != 0 && !String::equalNoCase(resultRole, toRole)) ||
                !samePath(referenceOf(association, fromRole), objectName))
            {
                continue;
            }
            links.push_back(Link{association, fromRole, referenceOf(association, toRole), toRole});
        }
    }
    return links;
}

void InteropProvider::getInstance(const OperationContext& context,
                                  const CIMObjectPath& instanceReference, const Boolean,
                                  const Boolean, const CIMPropertyList&,
                                  InstanceResponseHandler& handler)
{
    for (const CIMInstance& instance :
         _instances(context, instanceReference.getNameSpace(), instanceReference.getClassName()))
    {
        if (samePath(instance.getPath(), instanceReference))
        {
            handler.processing();
            handler.deliver(instance);
            handler.complete();
            return;
        }
    }
    throw CIMObjectNotFoundException(instanceReference.toString());
}

void InteropProvider::enumerateInstances(const OperationContext& context,
                                         const CIMObjectPath& classReference, const Boolean,
                                         const Boolean, const CIMPropertyList&,
                                         InstanceResponseHandler& handler)
{
    std::vector<CIMInstance> instances =
        _instances(context, classReference.getNameSpace(), classReference.getClassName());
    handler.processing();
    for (const CIMInstance& instance : instances)
    {
        handler.deliver(instance);
    }
    handler.complete();
}

void InteropProvider::enumerateInstanceNames(const OperationContext& context,
                                             const CIMObjectPath& classReference,
                                             ObjectPathResponseHandler& handler)
{
    std::vector<CIMInstance> instances =
        _instances(context, classReference.getNameSpace(), classReference.getClassName());
    handler.processing();
    for (const CIMInstance& instance : instances)
    {
        handler.deliver(instance.getPath());
    }
    handler.complete();
}

void InteropProvider::_refuse(const char* operation)
{
    throw CIMNotSupportedException(String("the interop namespace is read-only: ") + operation);
}

void InteropProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                     const CIMInstance&, const Boolean, const CIMPropertyList&,
                                     ResponseHandler&)
{
    _refuse("modifyInstance");
}

void InteropProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                     const CIMInstance&, ObjectPathResponseHandler&)
{
    _refuse("createInstance");
}

void InteropProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                     ResponseHandler&)
{
    _refuse("deleteInstance");
}

void InteropProvider::associators(const OperationContext& context, const CIMObjectPath& objectName,
                                  const CIMName& associationClass, const CIMName&,
                                  const String& role, const String& resultRole, const Boolean,
                                  const Boolean, const CIMPropertyList&,
                                  ObjectResponseHandler& handler)
{
    std::vector<Link> links = _links(context, objectName, associationClass, role, resultRole);
    handler.processing();
    for (const Link& link : links)
    {
        const CIMNamespaceName ns = link.to.getNameSpace();
        CIMInstance other;
        if (isInterop(ns))
        {
            for (const CIMInstance& candidate : _instances(context, ns, link.to.getClassName()))
            {
                if (samePath(candidate.getPath(), link.to))
                {
                    other = candidate;
                }
            }
        }
        else
        {
            // An element of another namespace, fetched as its caller may see it.
            other =
                _cimom.getInstance(context, ns, link.to, false, false, false, CIMPropertyList());
            other.setPath(link.to);
        }
        if (!other.isUninitialized())
        {
            handler.deliver(CIMObject(other));
        }
    }
    handler.complete();
}

void InteropProvider::associatorNames(const OperationContext& context,
                                      const CIMObjectPath& objectName,
                                      const CIMName& associationClass, const CIMName&,
                                      const String& role, const String& resultRole,
                                      ObjectPathResponseHandler& handler)
{
    std::vector<Link> links = _links(context, objectName, associationClass, role, resultRole);
    handler.processing();
    for (const Link& link : links)
    {
        handler.deliver(link.to);
    }
    handler.complete();
}

void InteropProvider::references(const OperationContext& context, const CIMObjectPath& objectName,
                                 const CIMName& associationClass, const String& role, const Boolean,
                                 const Boolean, const CIMPropertyList&,
                                 ObjectResponseHandler& handler)
{
    std::vector<Link> links = _links(context, objectName, associationClass, role, String());
    handler.processing();
    for (const Link& link : links)
    {
        handler.deliver(CIMObject(link.association));
    }
    handler.complete();
}

void InteropProvider::referenceNames(const OperationContext& context,
                                     const CIMObjectPath& objectName,
                                     const CIMName& associationClass, const String& role,
                                     ObjectPathResponseHandler& handler)
{
    std::vector<Link> links = _links(context, objectName, associationClass, role, String());
    handler.processing();
    for (const Link& link : links)
    {
        handler.deliver(link.association.getPath());
    }
    handler.complete();
}

} // namespace cimom
