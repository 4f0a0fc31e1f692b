// Entry point of the statistics provider module: the server asks for each
// registered provider by name and owns what it gets back.

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMProvider.h>

#include "ORV_BlockStatisticsCapabilitiesProvider.h"
#include "ORV_BlockStatisticsManifestCollectionProvider.h"
#include "ORV_BlockStatisticsManifestProvider.h"
#include "ORV_StatisticsElementCapabilitiesProvider.h"
#include "ORV_StatisticsCollectionProvider.h"
#include "ORV_AssociatedBlockStatisticsManifestCollectionProvider.h"
#include "ORV_MemberOfBlockStatisticsManifestCollectionProvider.h"
#include "ORV_MemberOfStatisticsCollectionProvider.h"
#include "ORV_ArrayStatisticalDataProvider.h"
#include "ORV_BlockStatisticsServiceProvider.h"
#include "ORV_DiskStatisticalDataProvider.h"
#include "ORV_LUNStatisticalDataProvider.h"
#include "ORV_NodeStatisticalDataProvider.h"
#include "ORV_PortStatisticalDataProvider.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "ORV_ArrayElementStatisticalDataProvider.h"
#include "ORV_DiskElementStatisticalDataProvider.h"
#include "ORV_NodeElementStatisticalDataProvider.h"
#include "ORV_PortElementStatisticalDataProvider.h"
#include "ORV_VolumeElementStatisticalDataProvider.h"

PEGASUS_USING_PEGASUS;

namespace
{

// Creates a provider and hands it out through its CIMProvider base, which the
// server uses whatever the provider's other bases are.
template <class P>
CIMProvider* create()
{
    return static_cast<CIMProvider*>(new P());
}

} // namespace

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    // Compared in this fixed order; the first match wins. Providers that the
    // module does not carry yet answer null.
    if (String::equalNoCase(providerName, "ORV_StatisticsCollectionProvider"))
    {
        return create<ORV_StatisticsCollectionProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_BlockStatisticsManifestCollectionProvider"))
    {
        return create<ORV_BlockStatisticsManifestCollectionProvider>();
    }
    if (String::equalNoCase(providerName,
                            "ORV_AssociatedBlockStatisticsManifestCollectionProvider"))
    {
        return create<ORV_AssociatedBlockStatisticsManifestCollectionProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_BlockStatisticsManifestProvider"))
    {
        return create<ORV_BlockStatisticsManifestProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_MemberOfBlockStatisticsManifestCollectionProvider"))
    {
        return create<ORV_MemberOfBlockStatisticsManifestCollectionProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_MemberOfStatisticsCollectionProvider"))
    {
        return create<ORV_MemberOfStatisticsCollectionProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_ArrayStatisticalDataProvider"))
    {
        return create<ORV_ArrayStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_ArrayElementStatisticalDataProvider"))
    {
        return create<ORV_ArrayElementStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_NodeStatisticalDataProvider"))
    {
        return create<ORV_NodeStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_NodeElementStatisticalDataProvider"))
    {
        return create<ORV_NodeElementStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_DiskStatisticalDataProvider"))
    {
        return create<ORV_DiskStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_DiskElementStatisticalDataProvider"))
    {
        return create<ORV_DiskElementStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_PortStatisticalDataProvider"))
    {
        return create<ORV_PortStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_PortElementStatisticalDataProvider"))
    {
        return create<ORV_PortElementStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_VolumeStatisticalDataProvider"))
    {
        return create<ORV_VolumeStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_VolumeElementStatisticalDataProvider"))
    {
        return create<ORV_VolumeElementStatisticalDataProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_BlockStatisticsServiceProvider"))
    {
        return create<ORV_BlockStatisticsServiceProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_BlockStatisticsCapabilitiesProvider"))
    {
        return create<ORV_BlockStatisticsCapabilitiesProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_StatisticsElementCapabilitiesProvider"))
    {
        return create<ORV_StatisticsElementCapabilitiesProvider>();
    }
    if (String::equalNoCase(providerName, "ORV_LUNStatisticalDataProvider"))
    {
        return create<ORV_LUNStatisticalDataProvider>();
    }
    return 0;
}
