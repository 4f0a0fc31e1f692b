#ifndef ORV_SIBLINGS_ElementPaths_h
#define ORV_SIBLINGS_ElementPaths_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

// The one place where the keys of the array's managed elements are decided.
// The static path builders other modules call and the element providers that
// resolve those paths both use these functions, so they cannot drift apart.
//
//   ORV_StorageSystem      CreationClassName, Name = system name
//   ORV_NodeSystem         CreationClassName, Name = node name ("0".."7")
//   ORV_DiskStorageExtent  SystemCreationClassName "ORV_StorageSystem",
//                          SystemName = system name, CreationClassName,
//                          DeviceID = disk device ID (drive WWN)
//   ORV_FCPort,            SystemCreationClassName "ORV_NodeSystem",
//   ORV_EthernetPort       SystemName = node name, CreationClassName,
//                          DeviceID = port device ID
//   ORV_StorageVolume      SystemCreationClassName "ORV_StorageSystem",
//                          SystemName = system name, CreationClassName,
//                          DeviceID = volume WWN, 32 upper-case hex digits
//   ORV_InternalCache      InstanceID = "localhost-InternalCache"
namespace orvsib
{

extern const char* const ELEMENT_NAMESPACE;
extern const char* const STORAGE_SYSTEM_CLASS;
extern const char* const NODE_SYSTEM_CLASS;
extern const char* const DISK_EXTENT_CLASS;
extern const char* const FC_PORT_CLASS;
extern const char* const ETHERNET_PORT_CLASS;
extern const char* const STORAGE_VOLUME_CLASS;

extern const char* const INTERNAL_CACHE_NAMESPACE;
extern const char* const INTERNAL_CACHE_CLASS;
extern const char* const INTERNAL_CACHE_ID;

Pegasus::CIMObjectPath storageSystemPath(const Pegasus::String& host,
                                         const Pegasus::String& systemName);

Pegasus::CIMObjectPath nodeSystemPath(const Pegasus::String& host, const Pegasus::String& nodeName);

Pegasus::CIMObjectPath diskExtentPath(const Pegasus::String& host,
                                      const Pegasus::String& systemName,
                                      const Pegasus::String& diskDeviceID);

Pegasus::CIMObjectPath portPath(const Pegasus::CIMName& className, const Pegasus::String& host,
                                const Pegasus::String& nodeDeviceID,
                                const Pegasus::String& portDeviceID);

Pegasus::CIMObjectPath volumePath(const Pegasus::String& host, const Pegasus::String& systemName,
                                  const Pegasus::String& wwn);

Pegasus::CIMObjectPath internalCachePath(const Pegasus::String& host);

// Fibre Channel and FCoE ports are served as ORV_FCPort; every other
// protocol (iSCSI, IP, SAS, unknown) as ORV_EthernetPort.
bool isFibreChannelProtocol(int protocol);
const char* portClassForProtocol(int protocol);

// A WWN in the form volume DeviceIDs use: 32 upper-case hexadecimal digits.
// Text that is no WWN comes back unchanged (and so names no volume).
Pegasus::String canonicalWWN(const Pegasus::String& wwn);

} // namespace orvsib

#endif
