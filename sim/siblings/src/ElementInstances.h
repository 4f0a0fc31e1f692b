#ifndef ORV_SIBLINGS_ElementInstances_h
#define ORV_SIBLINGS_ElementInstances_h

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

#include <orvapi.h>
#include <orvsim.h>

// Turns one record of the array into the CIM instance of its element. No I/O:
// callers fetch the records and the class definition. Properties the class
// definition lacks (a property list filtered them out) are skipped.
namespace orvsib
{

Pegasus::CIMInstance buildStorageSystem(const Pegasus::CIMClass& cimClass,
                                        const orvsim_identity_t& identity);

Pegasus::CIMInstance buildNodeSystem(const Pegasus::CIMClass& cimClass, const api_NodeInfo_t& node,
                                     const Pegasus::String& host);

// info may be null when the model has no descriptive data for the drive.
Pegasus::CIMInstance buildDiskExtent(const Pegasus::CIMClass& cimClass, const api_DiskStats_t& disk,
                                     const orvsim_disk_info_t* info,
                                     const Pegasus::String& systemName,
                                     const Pegasus::String& host);

// The class (ORV_FCPort or ORV_EthernetPort) follows the port's protocol.
Pegasus::CIMInstance buildPort(const Pegasus::CIMClass& cimClass, const api_PortStats_t& port,
                               const orvsim_port_info_t* info, const Pegasus::String& host);

Pegasus::CIMInstance buildVolume(const Pegasus::CIMClass& cimClass, const api_VVInfo_t& volume,
                                 const Pegasus::String& systemName, const Pegasus::String& host);

Pegasus::CIMInstance buildInternalCache(const Pegasus::CIMClass& cimClass,
                                        const Pegasus::String& host);

// Blocks of blockSize bytes in sizeMiB mebibytes (0 when blockSize is 0).
Pegasus::Uint64 blocksOf(Pegasus::Uint64 sizeMiB, Pegasus::Uint32 blockSize);

} // namespace orvsib

#endif
