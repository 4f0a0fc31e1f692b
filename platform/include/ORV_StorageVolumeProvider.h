#ifndef ORV_StorageVolumeProvider_h
#define ORV_StorageVolumeProvider_h

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

// Object-path builder of the storage volume provider ("ORV_StorageVolume").
class ORV_StorageVolumeProvider
{
public:
    // wwn: the volume's WWN as hexadecimal text.
    static Pegasus::CIMObjectPath createObjectPath(Pegasus::String wwn,
                                                   const Pegasus::String& systemName,
                                                   const Pegasus::String& hostAddr);
};

#endif
