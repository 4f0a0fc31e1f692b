#ifndef Pegasus_Client_Linkage_h
#define Pegasus_Client_Linkage_h

#include <Pegasus/Common/Config.h>

// One shared library holds the whole SDK here, so nothing needs exporting specially.
#ifndef PEGASUS_CLIENT_LINKAGE
#define PEGASUS_CLIENT_LINKAGE
#endif

#endif
