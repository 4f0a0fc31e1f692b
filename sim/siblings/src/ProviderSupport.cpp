#include "ProviderSupport.h"

#include <orvapi.h>

#include <Pegasus/Common/Exception.h>

PEGASUS_USING_PEGASUS;

namespace orvsib
{

String userOf(const OperationContext& context)
{
    try
    {
        IdentityContainer identity = context.get(IdentityContainer::NAME);
        return identity.getUserName();
    }
    catch (const Exception&)
    {
        return String();
    }
}

void checkUser(const OperationContext& context)
{
    const CString user = userOf(context).getCString();
    if (api_orvOpenForCimserver(user) != 0)
    {
        throw CIMException(CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user");
    }
}

} // namespace orvsib
