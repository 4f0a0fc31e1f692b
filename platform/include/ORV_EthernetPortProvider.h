#ifndef ORV_EthernetPortProvider_h
#define ORV_EthernetPortProvider_h

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

// Object-path builder of the Ethernet (iSCSI, IP) port provider
// ("ORV_EthernetPort"). Note the port comes before its node here, unlike the
// Fibre Channel builder.
class ORV_EthernetPortProvider
{
public:
    static Pegasus::CIMObjectPath buildObjectPath(const Pegasus::String& hostAddr,
                                                  const Pegasus::String& portDeviceID,
                                                  const Pegasus::String& nodeDeviceID);
};

#endif
