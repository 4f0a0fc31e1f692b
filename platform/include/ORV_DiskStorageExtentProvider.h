#ifndef ORV_DiskStorageExtentProvider_h
#define ORV_DiskStorageExtentProvider_h

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

// Object-path builder of the physical disk provider ("ORV_DiskStorageExtent").
class ORV_DiskStorageExtentProvider
{
public:
    static Pegasus::CIMObjectPath buildObjectPath(const Pegasus::String& hostAddr,
                                                  const Pegasus::String& diskDeviceID,
                                                  const Pegasus::String& systemName);
};

#endif
