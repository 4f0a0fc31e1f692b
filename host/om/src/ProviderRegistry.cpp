#include "ProviderRegistry.h"

#include "Text.h"

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>
#include <sys/stat.h>

PEGASUS_USING_PEGASUS;

namespace cimom
{

namespace
{

const CIMName PROVIDER_MODULE_CLASS("PG_ProviderModule");
const CIMName PROVIDER_CLASS("PG_Provider");
const CIMName CAPABILITIES_CLASS("PG_ProviderCapabilities");
const char* const ENTRY_POINT = "PegasusCreateProvider";
const char* const INTERFACE_TYPE = "C++Default";

bool fileExists(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// The directory this library was loaded from: provider modules built next
// to it are found without configuration.
std::string ownDirectory()
{
    Dl_info info;
    if (::dladdr(reinterpret_cast<void*>(&ownDirectory), &info) == 0 || !info.dli_fname)
    {
        return std::string();
    }
    std::string file(info.dli_fname);
    std::string::size_type slash = file.rfind('/');
    return slash == std::string::npos ? std::string(".") : file.substr(0, slash);
}

bool readString(const CIMInstance& instance, const char* name, std::string& out)
{
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos == PEG_NOT_FOUND)
    {
        return false;
    }
    CIMValue value = instance.getProperty(pos).getValue();
    if (value.isNull() || value.isArray() || value.getType() != CIMTYPE_STRING)
    {
        return false;
    }
    String text;
    value.get(text);
    out = toStd(text);
    return !out.empty();
}

Array<String> readStrings(const CIMInstance& instance, const char* name)
{
    Array<String> result;
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos != PEG_NOT_FOUND)
    {
        CIMValue value = instance.getProperty(pos).getValue();
        if (!value.isNull() && value.isArray() && value.getType() == CIMTYPE_STRING)
        {
            value.get(result);
        }
    }
    return result;
}

Array<Uint16> readUint16s(const CIMInstance& instance, const char* name)
{
    Array<Uint16> result;
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos != PEG_NOT_FOUND)
    {
        CIMValue value = instance.getProperty(pos).getValue();
        if (!value.isNull() && value.isArray() && value.getType() == CIMTYPE_UINT16)
        {
            value.get(result);
        }
    }
    return result;
}

int kindSlot(ProviderKind kind)
{
    switch (kind)
    {
    case KindInstance:
        return 0;
    case KindAssociation:
        return 1;
    default:
        return 2;
    }
}

} // namespace

void ErrorLog::add(const std::string& line)
{
    std::fprintf(stderr, "cimom: %s\n", line.c_str());
    std::lock_guard<std::mutex> lock(_mutex);
    _lines.push_back(line);
}

std::vector<std::string> ErrorLog::lines() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _lines;
}

ProviderEntry::ProviderEntry(std::shared_ptr<ProviderModule> module, const std::string& name)
    : _module(std::move(module)), _name(name)
{
}

std::string ProviderEntry::label() const
{
    return "provider " + _name + " (module " + _module->name + ")";
}

void ProviderEntry::_fail(const std::string& why, ErrorLog& errors)
{
    _error = label() + " is not available: " + why;
    _state = State::Failed;
    errors.add(_error);
}

CIMProvider* ProviderEntry::tryAcquire(CIMOMHandle& handle, ErrorLog& errors,
                                       std::string& loadError)
{
    std::unique_lock<std::mutex> lock(_mutex);
    for (;;)
    {
        switch (_state)
        {
        case State::Ready:
            ++_inFlight;
            return _provider;
        case State::Failed:
            loadError = _error;
            return nullptr;
        case State::Terminated:
            throw CIMException(CIM_ERR_FAILED,
                               String((label() + " has been shut down").c_str()));
        case State::Initializing:
            if (_initThread == std::this_thread::get_id())
            {
                // Waiting here would never end.
                throw CIMException(
                    CIM_ERR_FAILED,
                    String((label() + " was called back during its own initialize()").c_str()));
            }
            _changed.wait(lock);
            continue;
        case State::Fresh:
            break;
        }

        if (!_module->error.empty())
        {
            _fail(_module->error, errors);
            continue;
        }
        _state = State::Initializing;
        _initThread = std::this_thread::get_id();
        lock.unlock();

        // Create and initialize outside the lock: initialize() commonly calls
        // back into the object manager, which may reach other providers.
        CIMProvider* provider = nullptr;
        std::string failure;
        try
        {
            provider = _module->create(String(_name.c_str()));
            if (!provider)
            {
                failure = std::string(ENTRY_POINT) + " returned no provider for this name";
            }
            else
            {
                provider->initialize(handle);
            }
        }
        catch (const CIMException& e)
        {
            failure = "initialize failed: " + toStd(e.getMessage()) + " (CIM status " +
                      std::to_string(static_cast<int>(e.getCode())) + ")";
        }
        catch (const Exception& e)
        {
            failure = "initialize failed: " + toStd(e.getMessage());
        }
        catch (const std::exception& e)
        {
            failure = std::string("initialize failed: ") + e.what();
        }
        catch (...)
        {
            failure = "initialize failed with an unknown exception";
        }

        lock.lock();
        _provider = provider;
        if (failure.empty())
        {
            _state = State::Ready;
        }
        else
        {
            _fail(failure, errors);
        }
        _changed.notify_all();
    }
}

void ProviderEntry::release()
{
    std::lock_guard<std::mutex> lock(_mutex);
    if (--_inFlight == 0)
    {
        _changed.notify_all();
    }
}

void ProviderEntry::terminate()
{
    CIMProvider* provider = nullptr;
    {
        std::unique_lock<std::mutex> lock(_mutex);
        while (_state == State::Initializing || _inFlight > 0)
        {
            _changed.wait(lock);
        }
        if (_state == State::Terminated)
        {
            return;
        }
        // A provider whose initialize() threw is handed back too: terminate()
        // is how a provider releases itself.
        provider = _provider;
        _provider = nullptr;
        _state = State::Terminated;
        _changed.notify_all();
    }
    if (!provider)
    {
        return;
    }
    try
    {
        provider->terminate();
    }
    catch (const Exception& e)
    {
        std::fprintf(stderr, "cimom: %s: terminate failed: %s\n", label().c_str(),
                     (const char*)e.getMessage().getCString());
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "cimom: %s: terminate failed: %s\n", label().c_str(), e.what());
    }
    catch (...)
    {
        std::fprintf(stderr, "cimom: %s: terminate failed\n", label().c_str());
    }
}

ProviderRegistry::ProviderRegistry(ErrorLog& errors) : _errors(errors)
{
}

ProviderRegistry::~ProviderRegistry()
{
    terminateAll();
}

void ProviderRegistry::addSearchPath(const std::string& dir)
{
    _extraDirs.push_back(dir);
}

std::vector<std::string> ProviderRegistry::_searchPath() const
{
    std::vector<std::string> dirs = _extraDirs;
    if (const char* env = std::getenv("ORV_PROVIDER_DIR"))
    {
        std::string list(env);
        std::string::size_type start = 0;
        while (start <= list.size())
        {
            std::string::size_type end = list.find(':', start);
            if (end == std::string::npos)
            {
                end = list.size();
            }
            if (end > start)
            {
                dirs.push_back(list.substr(start, end - start));
            }
            start = end + 1;
        }
    }
    std::string own = ownDirectory();
    if (!own.empty())
    {
        dirs.push_back(own);
    }
    return dirs;
}

std::string ProviderRegistry::_key(const CIMNamespaceName& ns, const CIMName& className)
{
    return lower(ns.getString()) + ":" + lower(className.getString());
}

void ProviderRegistry::_openModule(ProviderModule& module)
{
    std::vector<std::string> candidates;
    if (module.location.find('/') != std::string::npos)
    {
        candidates.push_back(module.location);
    }
    else
    {
        for (const std::string& dir : _searchPath())
        {
            candidates.push_back(dir + "/lib" + module.location + ".so");
            candidates.push_back(dir + "/lib" + module.location + ".so.1");
        }
    }

    std::string tried;
    for (const std::string& file : candidates)
    {
        if (!fileExists(file))
        {
            tried += (tried.empty() ? "" : ", ") + file;
            continue;
        }
        void* handle = ::dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL);
        if (!handle)
        {
            const char* why = ::dlerror();
            module.error = "cannot load " + file + ": " + (why ? why : "unknown error");
            return;
        }
        module.path = file;
        module.handle = handle;
        ::dlerror();
        void* symbol = ::dlsym(handle, ENTRY_POINT);
        if (!symbol)
        {
            module.error = "library " + file + " has no " + ENTRY_POINT;
            return;
        }
        module.create = reinterpret_cast<CIMProvider* (*)(const String&)>(symbol);
        return;
    }
    module.error = "library lib" + module.location + ".so not found (looked for " +
                   (tried.empty() ? std::string("nothing: no search path") : tried) + ")";
}

void ProviderRegistry::addBuiltInModule(const std::string& name, CreateProviderFunction create)
{
    auto module = std::make_shared<ProviderModule>();
    module->name = name;
    module->location = "(built in)";
    module->path = "(built in)";
    module->create = std::move(create);
    std::string key = lower(String(name.c_str()));
    if (_modules.count(key))
    {
        _errors.add("provider module " + name + " registered twice; the second is ignored");
        return;
    }
    _modules[key] = module;
}

void ProviderRegistry::registerInstances(const std::vector<CIMInstance>& instances,
                                         const std::string& source)
{
    // Modules first, then providers, then capabilities, so the file may
    // list them in any order.
    for (const CIMInstance& instance : instances)
    {
        if (instance.getClassName().equal(PROVIDER_MODULE_CLASS))
        {
            _addModule(instance, source);
        }
    }
    for (const CIMInstance& instance : instances)
    {
        if (instance.getClassName().equal(PROVIDER_CLASS))
        {
            _addProvider(instance, source);
        }
    }
    for (const CIMInstance& instance : instances)
    {
        if (instance.getClassName().equal(CAPABILITIES_CLASS))
        {
            _addCapability(instance, source);
        }
    }
}

void ProviderRegistry::_addModule(const CIMInstance& instance, const std::string& source)
{
    auto module = std::make_shared<ProviderModule>();
    if (!readString(instance, "Name", module->name))
    {
        _errors.add(source + ": PG_ProviderModule without Name ignored");
        return;
    }
    std::string key = lower(String(module->name.c_str()));
    if (_modules.count(key))
    {
        _errors.add(source + ": provider module " + module->name +
                    " registered twice; the second is ignored");
        return;
    }
    std::string interfaceType;
    readString(instance, "InterfaceType", interfaceType);
    if (!readString(instance, "Location", module->location))
    {
        module->error = "registration has no Location";
    }
    else if (!String::equalNoCase(String(interfaceType.c_str()), INTERFACE_TYPE))
    {
        module->error = "interface type \"" + interfaceType + "\" is not supported (only " +
                        INTERFACE_TYPE + ")";
    }
    else
    {
        _openModule(*module);
    }
    if (!module->error.empty())
    {
        _errors.add("provider module " + module->name + ": " + module->error);
    }
    _modules[key] = module;
}

void ProviderRegistry::_addProvider(const CIMInstance& instance, const std::string& source)
{
    std::string moduleName, name;
    if (!readString(instance, "ProviderModuleName", moduleName) ||
        !readString(instance, "Name", name))
    {
        _errors.add(source + ": PG_Provider without ProviderModuleName or Name ignored");
        return;
    }
    auto module = _modules.find(lower(String(moduleName.c_str())));
    if (module == _modules.end())
    {
        _errors.add(source + ": provider " + name + " names unknown module " + moduleName);
        return;
    }
    std::string key = lower(String((moduleName + "/" + name).c_str()));
    if (_providers.count(key))
    {
        _errors.add(source + ": provider " + name + " registered twice; the second is ignored");
        return;
    }
    auto entry = std::make_unique<ProviderEntry>(module->second, name);
    _providerOrder.push_back(entry.get());
    _providers[key] = std::move(entry);
}

void ProviderRegistry::_addCapability(const CIMInstance& instance, const std::string& source)
{
    std::string moduleName, providerName, className;
    if (!readString(instance, "ProviderModuleName", moduleName) ||
        !readString(instance, "ProviderName", providerName) ||
        !readString(instance, "ClassName", className))
    {
        _errors.add(source +
                    ": PG_ProviderCapabilities without ProviderModuleName, ProviderName or "
                    "ClassName ignored");
        return;
    }
    auto provider = _providers.find(lower(String((moduleName + "/" + providerName).c_str())));
    if (provider == _providers.end())
    {
        _errors.add(source + ": capabilities for class " + className + " name unknown provider " +
                    providerName + " of module " + moduleName);
        return;
    }
    CIMName cls;
    try
    {
        cls = CIMName(String(className.c_str()));
    }
    catch (const Exception&)
    {
        _errors.add(source + ": capabilities name an invalid class \"" + className + "\"");
        return;
    }

    Array<String> namespaces = readStrings(instance, "Namespaces");
    Array<Uint16> types = readUint16s(instance, "ProviderType");
    if (namespaces.size() == 0 || types.size() == 0)
    {
        _errors.add(source + ": capabilities of " + providerName + " for " + className +
                    " lack Namespaces or ProviderType");
        return;
    }
    for (Uint32 n = 0; n < namespaces.size(); n++)
    {
        CIMNamespaceName ns;
        try
        {
            ns = CIMNamespaceName(namespaces[n]);
        }
        catch (const Exception&)
        {
            _errors.add(source + ": capabilities of " + providerName +
                        " name an invalid namespace \"" + toStd(namespaces[n]) + "\"");
            continue;
        }
        for (Uint32 t = 0; t < types.size(); t++)
        {
            if (types[t] != KindInstance && types[t] != KindAssociation && types[t] != KindMethod)
            {
                continue; // indication and query providers are not served here
            }
            ProviderKind kind = static_cast<ProviderKind>(types[t]);
            Registration reg{provider->second.get(), cls};
            auto inserted = _byKind[kindSlot(kind)].emplace(_key(ns, cls), reg);
            if (!inserted.second)
            {
                _errors.add(source + ": class " + className + " in " + toStd(ns.getString()) +
                            " already has a provider of type " + std::to_string(types[t]) +
                            " (" + inserted.first->second.provider->name() + "); " +
                            providerName + " is ignored for it");
                continue;
            }
            if (kind == KindAssociation)
            {
                _associationsByNs[lower(ns.getString())].push_back(reg);
            }
        }
    }
}

const Registration* ProviderRegistry::find(ProviderKind kind, const CIMNamespaceName& ns,
                                           const CIMName& className) const
{
    const auto& table = _byKind[kindSlot(kind)];
    auto it = table.find(_key(ns, className));
    return it == table.end() ? nullptr : &it->second;
}

std::vector<Registration> ProviderRegistry::associationProviders(const CIMNamespaceName& ns) const
{
    auto it = _associationsByNs.find(lower(ns.getString()));
    return it == _associationsByNs.end() ? std::vector<Registration>() : it->second;
}

void ProviderRegistry::terminateAll()
{
    for (ProviderEntry* entry : _providerOrder)
    {
        entry->terminate();
    }
}

} // namespace cimom
