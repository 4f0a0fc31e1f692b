#ifndef Pegasus_CIMProvider_h
#define Pegasus_CIMProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

// The root of every provider interface. The other interfaces derive from it
// virtually, so a provider implementing several of them has one lifecycle.
class PEGASUS_PROVIDER_LINKAGE CIMProvider
{
public:
    CIMProvider();
    virtual ~CIMProvider();

    // Called once before any request; the handle stays valid until terminate().
    virtual void initialize(CIMOMHandle& cimom) = 0;
    // Called once after the last request; the provider may delete itself here.
    virtual void terminate() = 0;
};

PEGASUS_NAMESPACE_END

#endif
