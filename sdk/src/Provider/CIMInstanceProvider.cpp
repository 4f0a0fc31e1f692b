#include <Pegasus/Provider/CIMInstanceProvider.h>

PEGASUS_NAMESPACE_BEGIN

CIMInstanceProvider::CIMInstanceProvider()
{
}

CIMInstanceProvider::~CIMInstanceProvider()
{
}

PEGASUS_NAMESPACE_END
