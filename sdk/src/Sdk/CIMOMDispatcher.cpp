#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include <atomic>

PEGASUS_NAMESPACE_BEGIN

CIMOMDispatcher::~CIMOMDispatcher()
{
}

namespace Sdk
{
namespace
{
// Set by the host before requests flow; read by every local client connection.
std::atomic<CIMOMDispatcher*> localDispatcher(nullptr);
} // namespace

void setLocalDispatcher(CIMOMDispatcher* dispatcher)
{
    localDispatcher.store(dispatcher);
}

CIMOMDispatcher* getLocalDispatcher()
{
    return localDispatcher.load();
}
} // namespace Sdk

PEGASUS_NAMESPACE_END
