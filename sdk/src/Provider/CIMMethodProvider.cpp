#include <Pegasus/Provider/CIMMethodProvider.h>

PEGASUS_NAMESPACE_BEGIN

CIMMethodProvider::CIMMethodProvider()
{
}

CIMMethodProvider::~CIMMethodProvider()
{
}

PEGASUS_NAMESPACE_END
