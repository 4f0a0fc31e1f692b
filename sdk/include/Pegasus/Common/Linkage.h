#ifndef Pegasus_Common_Linkage_h
#define Pegasus_Common_Linkage_h

#include <Pegasus/Common/Config.h>

#endif
