#ifndef ORV_NodeSystemProvider_h
#define ORV_NodeSystemProvider_h

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

// Object-path builder of the controller node provider ("ORV_NodeSystem").
class ORV_NodeSystemProvider
{
public:
    // node: the node as the management API names it (its number as text).
    static Pegasus::CIMObjectPath buildObjectPath(const Pegasus::String& hostAddr,
                                                  const Pegasus::String& node);
};

#endif
