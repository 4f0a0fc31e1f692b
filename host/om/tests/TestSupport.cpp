#include "TestSupport.h"

#include "providers/OMTestControl.h"

#include <ORV_ClientAddressContainer.h>

#include <algorithm>
#include <cctype>
#include <dlfcn.h>

PEGASUS_USING_PEGASUS;

namespace omtest
{

const CIMNamespaceName NS("test/om");

std::unique_ptr<cimom::ObjectManager> makeObjectManager()
{
    auto om = std::make_unique<cimom::ObjectManager>();
    om->setHostName("omhost");
    om->loadMofFile(OM_TEST_DATA_DIR "/OMTest.mof", NS);
    om->loadRegistrationFile(OM_TEST_DATA_DIR "/OMTestR.mof");
    return om;
}

namespace
{

void* providerLibrary()
{
    // The object manager has opened it already; this only takes a reference.
    static void* handle = ::dlopen(OM_TEST_PROVIDER_LIB, RTLD_NOW | RTLD_GLOBAL);
    return handle;
}

} // namespace

std::vector<std::string> providerEvents()
{
    std::vector<std::string> events;
    auto get = reinterpret_cast<OMTestEventsFunction>(::dlsym(providerLibrary(), "OMTest_events"));
    if (get)
    {
        get(&events);
    }
    return events;
}

void resetProviderEvents()
{
    auto reset = reinterpret_cast<OMTestResetFunction>(::dlsym(providerLibrary(), "OMTest_reset"));
    if (reset)
    {
        reset();
    }
}

int countEvents(const std::string& event)
{
    std::vector<std::string> events = providerEvents();
    return static_cast<int>(std::count(events.begin(), events.end(), event));
}

std::vector<std::string> eventsStartingWith(const std::string& prefix)
{
    std::vector<std::string> result;
    for (const std::string& e : providerEvents())
    {
        if (e.compare(0, prefix.size(), prefix) == 0)
        {
            result.push_back(e);
        }
    }
    return result;
}

OperationContext contextFor(const char* user, const char* address)
{
    OperationContext context;
    context.insert(IdentityContainer(String(user)));
    if (address)
    {
        context.insert(ORV_ClientAddressContainer(String(address)));
    }
    return context;
}

CIMObjectPath elementPath(const char* className, const char* id)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("Id"), String(id), CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(), CIMName(className), keys);
}

std::string str(const String& s)
{
    return std::string((const char*)s.getCString());
}

namespace
{

std::string idOf(const CIMObjectPath& path)
{
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(CIMName("Id")))
        {
            return str(keys[i].getValue());
        }
    }
    // Associations: name them by their two ends.
    std::string joined;
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        CIMObjectPath end(keys[i].getValue());
        joined += (joined.empty() ? "" : "-") + idOf(end);
    }
    return joined;
}

} // namespace

std::vector<std::string> ids(const Array<CIMObjectPath>& paths)
{
    std::vector<std::string> result;
    for (Uint32 i = 0; i < paths.size(); i++)
    {
        result.push_back(idOf(paths[i]));
    }
    std::sort(result.begin(), result.end());
    return result;
}

std::vector<std::string> ids(const Array<CIMInstance>& instances)
{
    Array<CIMObjectPath> paths;
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        paths.append(instances[i].getPath());
    }
    return ids(paths);
}

std::vector<std::string> ids(const Array<CIMObject>& objects)
{
    Array<CIMObjectPath> paths;
    for (Uint32 i = 0; i < objects.size(); i++)
    {
        paths.append(objects[i].getPath());
    }
    return ids(paths);
}

std::vector<std::string> propertyNames(const CIMInstance& instance)
{
    std::vector<std::string> names;
    for (Uint32 i = 0; i < instance.getPropertyCount(); i++)
    {
        std::string n = str(instance.getProperty(i).getName().getString());
        std::transform(n.begin(), n.end(), n.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        names.push_back(n);
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace omtest
