#include "ElementPaths.h"

#include <ORV_DiskStorageExtentProvider.h>
#include <ORV_EthernetPortProvider.h>
#include <ORV_FCPortProvider.h>
#include <ORV_NodeSystemProvider.h>
#include <ORV_StorageVolumeProvider.h>
#include <orvapi.h>

#include <Pegasus/Common/CIMObjectPath.h>

PEGASUS_USING_PEGASUS;

namespace orvsib
{

const char* const ELEMENT_NAMESPACE = "root/orv";
const char* const STORAGE_SYSTEM_CLASS = "ORV_StorageSystem";
const char* const NODE_SYSTEM_CLASS = "ORV_NodeSystem";
const char* const DISK_EXTENT_CLASS = "ORV_DiskStorageExtent";
const char* const FC_PORT_CLASS = "ORV_FCPort";
const char* const ETHERNET_PORT_CLASS = "ORV_EthernetPort";
const char* const STORAGE_VOLUME_CLASS = "ORV_StorageVolume";

const char* const INTERNAL_CACHE_NAMESPACE = "root/PG_Internal";
const char* const INTERNAL_CACHE_CLASS = "ORV_InternalCache";
const char* const INTERNAL_CACHE_ID = "localhost-InternalCache";

namespace
{

CIMKeyBinding _key(const char* name, const String& value)
{
    return CIMKeyBinding(CIMName(name), value, CIMKeyBinding::STRING);
}

CIMObjectPath _devicePath(const String& host, const CIMName& className, const char* systemClass,
                          const String& systemName, const String& deviceID)
{
    Array<CIMKeyBinding> keys;
    keys.append(_key("CreationClassName", className.getString()));
    keys.append(_key("DeviceID", deviceID));
    keys.append(_key("SystemCreationClassName", systemClass));
    keys.append(_key("SystemName", systemName));
    return CIMObjectPath(host, CIMNamespaceName(ELEMENT_NAMESPACE), className, keys);
}

CIMObjectPath _systemPath(const String& host, const char* className, const String& name)
{
    Array<CIMKeyBinding> keys;
    keys.append(_key("CreationClassName", className));
    keys.append(_key("Name", name));
    return CIMObjectPath(host, CIMNamespaceName(ELEMENT_NAMESPACE), CIMName(className), keys);
}

} // namespace

CIMObjectPath storageSystemPath(const String& host, const String& systemName)
{
    return _systemPath(host, STORAGE_SYSTEM_CLASS, systemName);
}

CIMObjectPath nodeSystemPath(const String& host, const String& nodeName)
{
    return _systemPath(host, NODE_SYSTEM_CLASS, nodeName);
}

CIMObjectPath diskExtentPath(const String& host, const String& systemName,
                             const String& diskDeviceID)
{
    return _devicePath(host, CIMName(DISK_EXTENT_CLASS), STORAGE_SYSTEM_CLASS, systemName,
                       diskDeviceID);
}

CIMObjectPath portPath(const CIMName& className, const String& host, const String& nodeDeviceID,
                       const String& portDeviceID)
{
    return _devicePath(host, className, NODE_SYSTEM_CLASS, nodeDeviceID, portDeviceID);
}

CIMObjectPath volumePath(const String& host, const String& systemName, const String& wwn)
{
    return _devicePath(host, CIMName(STORAGE_VOLUME_CLASS), STORAGE_SYSTEM_CLASS, systemName,
                       canonicalWWN(wwn));
}

CIMObjectPath internalCachePath(const String& host)
{
    Array<CIMKeyBinding> keys;
    keys.append(_key("InstanceID", INTERNAL_CACHE_ID));
    return CIMObjectPath(host, CIMNamespaceName(INTERNAL_CACHE_NAMESPACE),
                         CIMName(INTERNAL_CACHE_CLASS), keys);
}

bool isFibreChannelProtocol(int protocol)
{
    return protocol == PORT_PROTOCOL_FC || protocol == PORT_PROTOCOL_FCOE;
}

const char* portClassForProtocol(int protocol)
{
    return isFibreChannelProtocol(protocol) ? FC_PORT_CLASS : ETHERNET_PORT_CLASS;
}

String canonicalWWN(const String& wwn)
{
    // The conversions are pure text work in the library: no semaphore.
    uint64_t high = 0;
    uint64_t low = 0;
    api_wwn_scratch_t scratch;
    CString text = wwn.getCString();
    if (api_wwnStringToInt(&scratch, text, &low, &high) != 0)
    {
        return wwn;
    }
    char canonical[API_WWN_TEXT_LEN] = {0};
    if (api_wwnIntToString(low, high, canonical) != 0)
    {
        return wwn;
    }
    return String(canonical);
}

} // namespace orvsib

// Static builders declared for the modules that link against this one.

CIMObjectPath ORV_StorageVolumeProvider::createObjectPath(String wwn, const String& systemName,
                                                          const String& hostAddr)
{
    return orvsib::volumePath(hostAddr, systemName, wwn);
}

CIMObjectPath ORV_DiskStorageExtentProvider::buildObjectPath(const String& hostAddr,
                                                             const String& diskDeviceID,
                                                             const String& systemName)
{
    return orvsib::diskExtentPath(hostAddr, systemName, diskDeviceID);
}

CIMObjectPath ORV_NodeSystemProvider::buildObjectPath(const String& hostAddr, const String& node)
{
    return orvsib::nodeSystemPath(hostAddr, node);
}

CIMObjectPath ORV_FCPortProvider::buildObjectPath(const CIMName& className, const String& hostAddr,
                                                  const String& nodeDeviceID,
                                                  const String& portDeviceID)
{
    return orvsib::portPath(className, hostAddr, nodeDeviceID, portDeviceID);
}

CIMObjectPath ORV_EthernetPortProvider::buildObjectPath(const String& hostAddr,
                                                        const String& portDeviceID,
                                                        const String& nodeDeviceID)
{
    return orvsib::portPath(CIMName(orvsib::ETHERNET_PORT_CLASS), hostAddr, nodeDeviceID,
                            portDeviceID);
}
