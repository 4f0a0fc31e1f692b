#ifndef ORV_SIBLINGS_ProviderSupport_h
#define ORV_SIBLINGS_ProviderSupport_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>

// Guards shared by the sibling providers.
namespace orvsib
{

// The caller's user name; "" (the server itself) when the context has none.
Pegasus::String userOf(const Pegasus::OperationContext& context);

// Refuses a caller that the management API does not accept
// (CIM_ERR_ACCESS_DENIED).
void checkUser(const Pegasus::OperationContext& context);

// As checkUser, but also accepts the account this process runs under. A
// server with authentication on runs its own local requests (a provider's
// CIMClient::connectLocal) as the provider agent's OS user, root by default,
// which the array's user list need not name.
void checkUserOrServerAccount(const Pegasus::OperationContext& context);

// The name of the OS account this process runs under; "" when it has none.
Pegasus::String serverAccount();

// Runs work and turns a failed management API call into CIM_ERR_FAILED with
// a text that names the provider and the call.
template <typename Work> void reportingApiFailures(const char* providerName, Work work);

} // namespace orvsib

#include "ArrayAccess.h"

#include <Pegasus/Common/Exception.h>

template <typename Work> void orvsib::reportingApiFailures(const char* providerName, Work work)
{
    try
    {
        work();
    }
    catch (const ArrayAccessError& error)
    {
        throw Pegasus::CIMException(Pegasus::CIM_ERR_FAILED, Pegasus::String(providerName) +
                                                                 Pegasus::String(": ") +
                                                                 Pegasus::String(error.what()));
    }
}

#endif
