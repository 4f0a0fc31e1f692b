#include "ProviderSupport.h"

#include <orvapi.h>

#include <pwd.h>
#include <unistd.h>

#include <vector>

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

String serverAccount()
{
    struct passwd entry;
    struct passwd* found = 0;
    long size = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? size_t(size) : 16384);
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
    {
        return String();
    }
    return String(found->pw_name);
}

void checkUserOrServerAccount(const OperationContext& context)
{
    const String user = userOf(context);
    if (user.size() > 0 && user == serverAccount())
    {
        return;
    }
    checkUser(context);
}

} // namespace orvsib
