#ifndef ORV_FCPortProvider_h
#define ORV_FCPortProvider_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

// Object-path builder of the Fibre Channel port provider ("ORV_FCPort").
class ORV_FCPortProvider
{
public:
    static Pegasus::CIMObjectPath buildObjectPath(const Pegasus::CIMName& className,
                                                  const Pegasus::String& hostAddr,
                                                  const Pegasus::String& nodeDeviceID,
                                                  const Pegasus::String& portDeviceID);
};

#endif
