// A library that looks like a provider module but exports no
// PegasusCreateProvider; the object manager must refuse it cleanly.
#include <Pegasus/Common/String.h>

extern "C" int OMNoEntry_marker()
{
    return 1;
}
