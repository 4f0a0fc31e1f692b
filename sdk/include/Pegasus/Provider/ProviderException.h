#ifndef Pegasus_ProviderException_h
#define Pegasus_ProviderException_h

// Providers written for OpenPegasus include this path for the provider
// exceptions; ours live with the other CIM exceptions.
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>

#endif
