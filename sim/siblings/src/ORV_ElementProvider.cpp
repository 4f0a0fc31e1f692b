#include "ORV_ElementProvider.h"

#include "ArrayAccess.h"
#include "ElementInstances.h"
#include "ElementPaths.h"
#include "ProviderSupport.h"

#include <ORV_InternalCacheService.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

PEGASUS_USING_PEGASUS;

namespace orvsib
{

namespace
{

struct _KindInfo
{
    ElementKind kind;
    const char* providerName;
    const char* className;
};

const _KindInfo KINDS[] = {
    {ElementKind::StorageSystem, "ORV_StorageSystemProvider", STORAGE_SYSTEM_CLASS},
    {ElementKind::NodeSystem, "ORV_NodeSystemProvider", NODE_SYSTEM_CLASS},
    {ElementKind::DiskExtent, "ORV_DiskStorageExtentProvider", DISK_EXTENT_CLASS},
    {ElementKind::FCPort, "ORV_FCPortProvider", FC_PORT_CLASS},
    {ElementKind::EthernetPort, "ORV_EthernetPortProvider", ETHERNET_PORT_CLASS},
    {ElementKind::StorageVolume, "ORV_StorageVolumeProvider", STORAGE_VOLUME_CLASS},
};

const _KindInfo& _info(ElementKind kind)
{
    for (const _KindInfo& info : KINDS)
    {
        if (info.kind == kind)
        {
            return info;
        }
    }
    return KINDS[0];
}

// Keys whose values are class names, compared without regard to case.
bool _isClassNameKey(const CIMName& name)
{
    return name.equal(CIMName("CreationClassName")) ||
           name.equal(CIMName("SystemCreationClassName"));
}

} // namespace

ORV_ElementProvider::ORV_ElementProvider(ElementKind kind) : _kind(kind) {}

ORV_ElementProvider::~ORV_ElementProvider() {}

const char* ORV_ElementProvider::providerName(ElementKind kind)
{
    return _info(kind).providerName;
}

const char* ORV_ElementProvider::className(ElementKind kind)
{
    return _info(kind).className;
}

void ORV_ElementProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ORV_ElementProvider::terminate()
{
    delete this;
}

String ORV_ElementProvider::_text(const char* what) const
{
    return String(providerName(_kind)) + String(": ") + String(what);
}

void ORV_ElementProvider::_checkRequest(const OperationContext& context,
                                        const CIMObjectPath& path) const
{
    checkUser(context);
    if (!path.getClassName().equal(CIMName(className(_kind))))
    {
        throw CIMNotSupportedException(_text("class not served: ") +
                                       path.getClassName().getString());
    }
}

void ORV_ElementProvider::_checkKeys(const CIMObjectPath& path) const
{
    // The keys this kind needs are exactly those of a path it builds.
    const CIMObjectPath sample =
        _kind == ElementKind::StorageSystem || _kind == ElementKind::NodeSystem
            ? storageSystemPath(String(), String())
            : diskExtentPath(String(), String(), String());
    const Array<CIMKeyBinding>& wanted = sample.getKeyBindings();
    const Array<CIMKeyBinding>& given = path.getKeyBindings();
    for (Uint32 i = 0; i < wanted.size(); i++)
    {
        bool found = false;
        for (Uint32 j = 0; j < given.size() && !found; j++)
        {
            found = given[j].getName().equal(wanted[i].getName());
        }
        if (!found)
        {
            throw CIMInvalidParameterException(_text("key missing: ") +
                                               wanted[i].getName().getString());
        }
    }
}

bool ORV_ElementProvider::_keysMatch(const CIMObjectPath& requested,
                                     const CIMObjectPath& candidate) const
{
    const Array<CIMKeyBinding>& given = requested.getKeyBindings();
    const Array<CIMKeyBinding>& keys = candidate.getKeyBindings();
    if (given.size() != keys.size())
    {
        return false;
    }
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        const CIMName& name = keys[i].getName();
        bool matched = false;
        for (Uint32 j = 0; j < given.size(); j++)
        {
            if (!given[j].getName().equal(name))
            {
                continue;
            }
            String value = given[j].getValue();
            if (_kind == ElementKind::StorageVolume && name.equal(CIMName("DeviceID")))
            {
                // Clients may write a WWN in either case.
                value = canonicalWWN(value);
            }
            matched = _isClassNameKey(name) ? String::equalNoCase(value, keys[i].getValue())
                                            : String::equal(value, keys[i].getValue());
            break;
        }
        if (!matched)
        {
            return false;
        }
    }
    return true;
}

CIMClass ORV_ElementProvider::_classDefinition(Boolean includeQualifiers,
                                               Boolean includeClassOrigin,
                                               const CIMPropertyList& propertyList)
{
    return ORV_InternalCacheService::getInstance()->getStoredCIMClass(
        _cimom, OperationContext(), CIMNamespaceName(ELEMENT_NAMESPACE), CIMName(className(_kind)),
        false, includeQualifiers, includeClassOrigin, propertyList);
}

void ORV_ElementProvider::_visit(const _Visitor& visitor) const
{
    const orvsim_identity_t identity = readIdentity();
    const String host(identity.hostName);
    const String systemName(identity.systemName);

    switch (_kind)
    {
    case ElementKind::StorageSystem:
        visitor(storageSystemPath(host, systemName),
                [&](const CIMClass& cimClass) { return buildStorageSystem(cimClass, identity); });
        break;
    case ElementKind::NodeSystem:
        for (const api_NodeInfo_t& node : readNodes())
        {
            if (!visitor(nodeSystemPath(host, String(node.nodeName)), [&](const CIMClass& cimClass)
                         { return buildNodeSystem(cimClass, node, host); }))
            {
                return;
            }
        }
        break;
    case ElementKind::DiskExtent:
        for (const api_DiskStats_t& disk : readDisks())
        {
            if (!visitor(diskExtentPath(host, systemName, String(disk.diskDeviceID)),
                         [&](const CIMClass& cimClass)
                         {
                             orvsim_disk_info_t info;
                             const bool known = readDiskInfo(disk.diskDeviceID, info);
                             return buildDiskExtent(cimClass, disk, known ? &info : nullptr,
                                                    systemName, host);
                         }))
            {
                return;
            }
        }
        break;
    case ElementKind::FCPort:
    case ElementKind::EthernetPort:
        for (const api_PortStats_t& port : readPorts())
        {
            const bool fibreChannel = isFibreChannelProtocol(port.portProtocol);
            if (fibreChannel != (_kind == ElementKind::FCPort))
            {
                continue;
            }
            const CIMObjectPath path =
                portPath(CIMName(portClassForProtocol(port.portProtocol)), host,
                         String(port.nodeDeviceID), String(port.portDeviceID));
            if (!visitor(path,
                         [&](const CIMClass& cimClass)
                         {
                             orvsim_port_info_t info;
                             const bool known = readPortInfo(port.portDeviceID, info);
                             return buildPort(cimClass, port, known ? &info : nullptr, host);
                         }))
            {
                return;
            }
        }
        break;
    case ElementKind::StorageVolume:
        visitVolumes(
            [&](const api_VVInfo_t& volume)
            {
                return visitor(volumePath(host, systemName, String(volume.vvWWN)),
                               [&](const CIMClass& cimClass)
                               { return buildVolume(cimClass, volume, systemName, host); });
            });
        break;
    }
}

void ORV_ElementProvider::getInstance(const OperationContext& context,
                                      const CIMObjectPath& instanceReference,
                                      const Boolean includeQualifiers,
                                      const Boolean includeClassOrigin,
                                      const CIMPropertyList& propertyList,
                                      InstanceResponseHandler& handler)
{
    _checkRequest(context, instanceReference);
    _checkKeys(instanceReference);

    bool found = false;
    CIMInstance instance;
    reportingApiFailures(providerName(_kind),
                         [&]
                         {
                             _visit(
                                 [&](const CIMObjectPath& path, const _Builder& build)
                                 {
                                     if (!_keysMatch(instanceReference, path))
                                     {
                                         return true;
                                     }
                                     instance = build(_classDefinition(
                                         includeQualifiers, includeClassOrigin, propertyList));
                                     found = true;
                                     return false;
                                 });
                         });
    if (!found)
    {
        throw CIMObjectNotFoundException(_text("no such element: ") + instanceReference.toString());
    }
    handler.processing();
    handler.deliver(instance);
    handler.complete();
}

void ORV_ElementProvider::enumerateInstances(const OperationContext& context,
                                             const CIMObjectPath& classReference,
                                             const Boolean includeQualifiers,
                                             const Boolean includeClassOrigin,
                                             const CIMPropertyList& propertyList,
                                             InstanceResponseHandler& handler)
{
    _checkRequest(context, classReference);
    const CIMClass cimClass = _classDefinition(includeQualifiers, includeClassOrigin, propertyList);

    // Delivered one by one, so that a large array is never held whole.
    bool started = false;
    reportingApiFailures(providerName(_kind),
                         [&]
                         {
                             _visit(
                                 [&](const CIMObjectPath&, const _Builder& build)
                                 {
                                     const CIMInstance instance = build(cimClass);
                                     if (!started)
                                     {
                                         handler.processing();
                                         started = true;
                                     }
                                     handler.deliver(instance);
                                     return true;
                                 });
                         });
    if (!started)
    {
        handler.processing();
    }
    handler.complete();
}

void ORV_ElementProvider::enumerateInstanceNames(const OperationContext& context,
                                                 const CIMObjectPath& classReference,
                                                 ObjectPathResponseHandler& handler)
{
    _checkRequest(context, classReference);
    Array<CIMObjectPath> paths;
    reportingApiFailures(providerName(_kind),
                         [&]
                         {
                             _visit(
                                 [&](const CIMObjectPath& path, const _Builder&)
                                 {
                                     paths.append(path);
                                     return true;
                                 });
                         });
    handler.processing();
    handler.deliver(paths);
    handler.complete();
}

void ORV_ElementProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                         const CIMInstance&, const Boolean, const CIMPropertyList&,
                                         ResponseHandler&)
{
    throw CIMNotSupportedException(_text("modifyInstance is not supported"));
}

void ORV_ElementProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                         const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(_text("createInstance is not supported"));
}

void ORV_ElementProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                         ResponseHandler&)
{
    throw CIMNotSupportedException(_text("deleteInstance is not supported"));
}

} // namespace orvsib
