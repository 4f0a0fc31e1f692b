#include "ModuleFixture.h"

#include <cstdlib>
#include <mutex>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>

#include "orvsim.h"

extern "C" Pegasus::CIMProvider* PegasusCreateProvider(const Pegasus::String& providerName);

namespace orvtest
{

using namespace Pegasus;

const char* const READER_USER = "demo";
const char* const REFUSED_USER = "no_such_user";

namespace
{
const CIMNamespaceName ORV_NS("root/orv");
} // namespace

CimOutcome runCatching(const std::function<void()>& fn)
{
    CimOutcome outcome;
    try
    {
        fn();
    }
    catch (CIMException& e)
    {
        outcome.thrown = true;
        outcome.isCimException = true;
        outcome.code = e.getCode();
        outcome.message = str(e.getMessage());
    }
    catch (Exception& e)
    {
        outcome.thrown = true;
        outcome.message = str(e.getMessage());
    }
    catch (std::exception& e)
    {
        outcome.thrown = true;
        outcome.message = e.what();
    }
    return outcome;
}

std::string captureLog(const std::function<void()>& fn)
{
    orvsim_log_capture_begin();
    std::string text;
    auto take = [&text]() {
        char* lines = orvsim_log_capture_take();
        if (lines)
        {
            text = lines;
            free(lines);
        }
        orvsim_log_capture_end();
    };
    try
    {
        fn();
    }
    catch (...)
    {
        take();
        throw;
    }
    take();
    return text;
}

std::string str(const String& s)
{
    return std::string((const char*)s.getCString());
}

OperationContext contextFor(const String& user)
{
    OperationContext context;
    context.insert(IdentityContainer(user));
    return context;
}

CIMObjectPath instancePath(const CIMName& className, const String& instanceID)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), instanceID, CIMKeyBinding::STRING));
    return CIMObjectPath(String(), ORV_NS, className, keys);
}

CIMObjectPath classPath(const CIMName& className)
{
    return CIMObjectPath(String(), ORV_NS, className);
}

std::unique_ptr<cimom::ObjectManager> makeObjectManager()
{
    std::unique_ptr<cimom::ObjectManager> om(new cimom::ObjectManager());
    om->loadManifest(std::string(ORV_SOURCE_ROOT) + "/schema/load-order.txt", ORV_SOURCE_ROOT);
    return om;
}

cimom::ObjectManager& sharedObjectManager()
{
    static std::unique_ptr<cimom::ObjectManager> shared;
    static std::once_flag once;
    std::call_once(once, []() {
        shared = makeObjectManager();
        shared->makeLocal();
    });
    return *shared;
}

Pegasus::CIMProvider* createProvider(const String& name)
{
    return PegasusCreateProvider(name);
}

std::string simSystemName()
{
    orvsim_identity_t id;
    return orvsim_get_identity(&id) == 0 ? std::string(id.systemName) : std::string();
}

std::string simHostName()
{
    orvsim_identity_t id;
    return orvsim_get_identity(&id) == 0 ? std::string(id.hostName) : std::string();
}

void ModuleFixture::SetUp()
{
    orvsim_reset();
    sharedObjectManager().makeLocal();
}

void ModuleFixture::TearDown()
{
    orvsim_reset();
}

Array<CIMInstance> ModuleFixture::enumerateInstances(const String& user,
                                                     const CIMName& className,
                                                     const CIMPropertyList& propertyList)
{
    return om().enumerateInstances(contextFor(user), ORV_NS, className, true, false, false,
                                   false, propertyList);
}

Array<CIMObjectPath> ModuleFixture::enumerateInstanceNames(const String& user,
                                                           const CIMName& className)
{
    return om().enumerateInstanceNames(contextFor(user), ORV_NS, className);
}

CIMInstance ModuleFixture::getInstance(const String& user, const CIMObjectPath& path,
                                       const CIMPropertyList& propertyList)
{
    return om().getInstance(contextFor(user), ORV_NS, path, false, false, false, propertyList);
}

void ModuleFixture::loadModelJson(const std::string& json)
{
    ASSERT_EQ(0, orvsim_load_model_json(json.c_str())) << orvsim_last_error();
}

void ModuleFixture::injectFault(const char* call, int status)
{
    ASSERT_EQ(0, orvsim_set_fault(call, status, 0, 0)) << call;
}

} // namespace orvtest
