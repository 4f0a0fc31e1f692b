#include <Pegasus/Provider/CIMProvider.h>

PEGASUS_NAMESPACE_BEGIN

CIMProvider::CIMProvider()
{
}

CIMProvider::~CIMProvider()
{
}

PEGASUS_NAMESPACE_END
