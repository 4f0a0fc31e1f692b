#include "ElementInstances.h"

#include "ElementPaths.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_USING_PEGASUS;

namespace orvsib
{

namespace
{

// OperationalStatus and EnabledState values used below.
const Uint16 STATUS_OK = 2;
const Uint16 STATUS_ERROR = 6;
const Uint16 STATUS_STOPPED = 10;
const Uint16 STATUS_LOST_COMMUNICATION = 13;
const Uint16 ENABLED = 2;
const Uint16 DISABLED = 3;
const Uint16 HEALTH_OK = 5;
const Uint16 HEALTH_MAJOR_FAILURE = 20;
const Uint16 DEDICATED_STORAGE = 3;
const Uint16 DEDICATED_BLOCK_SERVER = 15;
const Uint16 LINK_ETHERNET = 2;
const Uint16 LINK_FC = 4;
const Uint16 USAGE_FRONT_END = 2;
const Uint16 USAGE_BACK_END = 3;
const Uint16 NAME_FORMAT_NAA = 9;
const Uint16 NAME_NAMESPACE_VPD83_TYPE3 = 2;
const Uint64 MEBIBYTE = 1024 * 1024;

void _set(CIMInstance& instance, const char* name, const CIMValue& value)
{
    const Uint32 pos = instance.findProperty(CIMName(name));
    if (pos != PEG_NOT_FOUND)
    {
        instance.getProperty(pos).setValue(value);
    }
}

Array<Uint16> _one(Uint16 value)
{
    Array<Uint16> values;
    values.append(value);
    return values;
}

Array<String> _strings(const String& first, const String& second = String())
{
    Array<String> values;
    values.append(first);
    if (second.size() != 0)
    {
        values.append(second);
    }
    return values;
}

CIMInstance _skeleton(const CIMClass& cimClass, const CIMObjectPath& path)
{
    CIMInstance instance = cimClass.buildInstance(true, true, CIMPropertyList());
    instance.setPath(path);
    _set(instance, "CreationClassName", CIMValue(path.getClassName().getString()));
    for (Uint32 i = 0; i < path.getKeyBindings().size(); i++)
    {
        const CIMKeyBinding& key = path.getKeyBindings()[i];
        _set(instance, key.getName().getString().getCString(), CIMValue(key.getValue()));
    }
    return instance;
}

} // namespace

Uint64 blocksOf(Uint64 sizeMiB, Uint32 blockSize)
{
    return blockSize == 0 ? 0 : sizeMiB * MEBIBYTE / blockSize;
}

CIMInstance buildStorageSystem(const CIMClass& cimClass, const orvsim_identity_t& identity)
{
    const String name(identity.systemName);
    CIMInstance instance = _skeleton(cimClass, storageSystemPath(identity.hostName, name));
    _set(instance, "ElementName", CIMValue(name));
    _set(instance, "Caption", CIMValue(String(identity.model)));
    _set(instance, "Description",
         CIMValue(String(identity.vendor) + String(" ") + String(identity.model)));
    _set(instance, "NameFormat", CIMValue(String("Other")));
    _set(instance, "OperationalStatus", CIMValue(_one(STATUS_OK)));
    _set(instance, "HealthState", CIMValue(HEALTH_OK));
    _set(instance, "EnabledState", CIMValue(ENABLED));
    Array<Uint16> dedicated;
    dedicated.append(DEDICATED_STORAGE);
    dedicated.append(DEDICATED_BLOCK_SERVER);
    _set(instance, "Dedicated", CIMValue(dedicated));
    _set(instance, "OtherIdentifyingInfo",
         CIMValue(_strings(identity.serialNumber, identity.firmwareVersion)));
    _set(instance, "IdentifyingDescriptions",
         CIMValue(_strings("Serial Number", "Firmware Version")));
    _set(instance, "SystemID", CIMValue(Uint32(identity.systemID)));
    _set(instance, "ManagementAddress", CIMValue(String(identity.address)));
    return instance;
}

CIMInstance buildNodeSystem(const CIMClass& cimClass, const api_NodeInfo_t& node,
                            const String& host)
{
    const String name(node.nodeName);
    CIMInstance instance = _skeleton(cimClass, nodeSystemPath(host, name));
    _set(instance, "ElementName", CIMValue(String("Node ") + name));
    _set(instance, "NodeNumber", CIMValue(Uint16(node.nodeID)));
    _set(instance, "NameFormat", CIMValue(String("Other")));
    _set(instance, "OperationalStatus",
         CIMValue(_one(node.online ? STATUS_OK : STATUS_LOST_COMMUNICATION)));
    _set(instance, "HealthState", CIMValue(node.online ? HEALTH_OK : HEALTH_MAJOR_FAILURE));
    _set(instance, "EnabledState", CIMValue(node.online ? ENABLED : DISABLED));
    _set(instance, "Dedicated", CIMValue(_one(DEDICATED_STORAGE)));
    if (node.master)
    {
        _set(instance, "Roles", CIMValue(_strings("Master")));
    }
    _set(instance, "OtherIdentifyingInfo", CIMValue(_strings(node.serial)));
    _set(instance, "IdentifyingDescriptions", CIMValue(_strings("Serial Number")));
    return instance;
}

CIMInstance buildDiskExtent(const CIMClass& cimClass, const api_DiskStats_t& disk,
                            const orvsim_disk_info_t* info, const String& systemName,
                            const String& host)
{
    const String deviceID(disk.diskDeviceID);
    CIMInstance instance = _skeleton(cimClass, diskExtentPath(host, systemName, deviceID));
    _set(instance, "ElementName", CIMValue(String(disk.diskName)));
    _set(instance, "Name", CIMValue(deviceID));
    _set(instance, "DiskID", CIMValue(Uint32(disk.diskID)));
    _set(instance, "LoopID", CIMValue(Uint32(disk.loopID)));
    _set(instance, "CageType", CIMValue(Uint32(disk.cageType)));
    _set(instance, "Primordial", CIMValue(true));
    const bool failed = info && info->failed;
    _set(instance, "OperationalStatus", CIMValue(_one(failed ? STATUS_ERROR : STATUS_OK)));
    _set(instance, "HealthState", CIMValue(failed ? HEALTH_MAJOR_FAILURE : HEALTH_OK));
    if (info)
    {
        const Uint64 blocks = blocksOf(info->capacityMiB, info->blockSize);
        _set(instance, "BlockSize", CIMValue(Uint64(info->blockSize)));
        _set(instance, "NumberOfBlocks", CIMValue(blocks));
        _set(instance, "ConsumableBlocks", CIMValue(blocks));
        String description = String(info->deviceClass) + String(" drive");
        _set(instance, "Description", CIMValue(description));
    }
    return instance;
}

CIMInstance buildPort(const CIMClass& cimClass, const api_PortStats_t& port,
                      const orvsim_port_info_t* info, const String& host)
{
    const bool fibreChannel = isFibreChannelProtocol(port.portProtocol);
    const CIMName className(portClassForProtocol(port.portProtocol));
    CIMInstance instance = _skeleton(
        cimClass, portPath(className, host, String(port.nodeDeviceID), String(port.portDeviceID)));
    _set(instance, "ElementName", CIMValue(String(port.portName)));
    _set(instance, "Name", CIMValue(String(port.portName)));
    _set(instance, "PortID", CIMValue(Uint16(port.portID)));
    _set(instance, "PortNumber", CIMValue(Uint16(port.portID & 7)));
    _set(instance, "LinkTechnology", CIMValue(fibreChannel ? LINK_FC : LINK_ETHERNET));
    _set(instance, "UsageRestriction",
         CIMValue(port.type == API_PORT_TYPE_TARGET ? USAGE_FRONT_END : USAGE_BACK_END));
    String address(port.portDeviceID);
    bool linkUp = true;
    if (info)
    {
        if (info->wwn[0] != '\0')
        {
            address = String(info->wwn);
        }
        else if (info->mac[0] != '\0')
        {
            address = String(info->mac);
        }
        _set(instance, "Speed", CIMValue(Uint64(info->speedBps)));
        _set(instance, "MaxSpeed", CIMValue(Uint64(info->speedBps)));
        linkUp = info->linkUp != 0;
    }
    _set(instance, "PermanentAddress", CIMValue(address));
    _set(instance, "NetworkAddresses", CIMValue(_strings(address)));
    _set(instance, "OperationalStatus",
         CIMValue(_one(linkUp ? STATUS_OK : STATUS_LOST_COMMUNICATION)));
    _set(instance, "EnabledState", CIMValue(ENABLED));
    return instance;
}

CIMInstance buildVolume(const CIMClass& cimClass, const api_VVInfo_t& volume,
                        const String& systemName, const String& host)
{
    const CIMObjectPath path = volumePath(host, systemName, String(volume.vvWWN));
    CIMInstance instance = _skeleton(cimClass, path);
    const Uint64 blocks = blocksOf(volume.sizeMiB, volume.blockSize);
    _set(instance, "ElementName", CIMValue(String(volume.vvName)));
    _set(instance, "Name", CIMValue(canonicalWWN(String(volume.vvWWN))));
    _set(instance, "NameFormat", CIMValue(NAME_FORMAT_NAA));
    _set(instance, "NameNamespace", CIMValue(NAME_NAMESPACE_VPD83_TYPE3));
    _set(instance, "VolumeID", CIMValue(Uint32(volume.vvID)));
    _set(instance, "BlockSize", CIMValue(Uint64(volume.blockSize)));
    _set(instance, "NumberOfBlocks", CIMValue(blocks));
    _set(instance, "ConsumableBlocks", CIMValue(blocks));
    _set(instance, "OperationalStatus",
         CIMValue(_one(volume.started ? STATUS_OK : STATUS_STOPPED)));
    _set(instance, "EnabledState", CIMValue(volume.started ? ENABLED : DISABLED));
    return instance;
}

CIMInstance buildInternalCache(const CIMClass& cimClass, const String& host)
{
    CIMInstance instance = cimClass.buildInstance(true, true, CIMPropertyList());
    instance.setPath(internalCachePath(host));
    _set(instance, "InstanceID", CIMValue(String(INTERNAL_CACHE_ID)));
    return instance;
}

} // namespace orvsib
