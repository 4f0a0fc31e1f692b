#include "ORV_ElementProvider.h"
#include "ORV_InternalCacheProvider.h"

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

PEGASUS_USING_PEGASUS;

using orvsib::ElementKind;
using orvsib::ORV_ElementProvider;

// Entry point of the module: one new provider per registered name, null for
// a name this module does not know.
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    if (String::equalNoCase(providerName, orvsib::ORV_InternalCacheProvider::PROVIDER_NAME))
    {
        return new orvsib::ORV_InternalCacheProvider();
    }
    const ElementKind kinds[] = {ElementKind::StorageSystem, ElementKind::NodeSystem,
                                 ElementKind::DiskExtent,    ElementKind::FCPort,
                                 ElementKind::EthernetPort,  ElementKind::StorageVolume};
    for (ElementKind kind : kinds)
    {
        if (String::equalNoCase(providerName, ORV_ElementProvider::providerName(kind)))
        {
            return new ORV_ElementProvider(kind);
        }
    }
    return 0;
}
