#ifndef Pegasus_Provider_Linkage_h
#define Pegasus_Provider_Linkage_h

#include <Pegasus/Common/Config.h>

// One shared library holds the whole SDK here, so nothing needs exporting specially.
#ifndef PEGASUS_PROVIDER_LINKAGE
#define PEGASUS_PROVIDER_LINKAGE
#endif

#endif
