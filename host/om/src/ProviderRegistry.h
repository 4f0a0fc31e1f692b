#ifndef CIMOM_PROVIDERREGISTRY_H
#define CIMOM_PROVIDERREGISTRY_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace cimom
{

/** Collects load problems; each is also written to stderr as it happens. */
class ErrorLog
{
public:
    void add(const std::string& line);
    std::vector<std::string> lines() const;

private:
    mutable std::mutex _mutex;
    std::vector<std::string> _lines;
};

typedef std::function<Pegasus::CIMProvider*(const Pegasus::String&)> CreateProviderFunction;

/** One provider library (a PG_ProviderModule). */
struct ProviderModule
{
    std::string name;
    std::string location;
    std::string path;  // file actually opened
    void* handle = nullptr;
    CreateProviderFunction create;
    std::string error; // why the module is unusable; empty when loaded
};

/**
    One registered provider (a PG_Provider). The object is created with the
    module's PegasusCreateProvider and initialized on first use, exactly
    once even when the first requests race; failures stick and are reported
    to every request. Requests in flight are counted so shutdown waits for
    them before calling terminate().
*/
class ProviderEntry
{
public:
    ProviderEntry(std::shared_ptr<ProviderModule> module, const std::string& name);

    const std::string& name() const
    {
        return _name;
    }
    const std::string& moduleName() const
    {
        return _module->name;
    }
    std::string label() const; // "Provider (module Module)"

    /** Marks one request in flight on the provider; the provider stays
        alive (shutdown waits) until release(). A provider that failed to
        load (library, entry point, creation or initialize) answers null
        with the reason in loadError; a provider shut down or called back
        from its own initialize() throws CIM_ERR_FAILED. */
    Pegasus::CIMProvider* tryAcquire(Pegasus::CIMOMHandle& handle, ErrorLog& errors,
                                     std::string& loadError);
    void release();

    /** Terminates the provider once no request is in flight. */
    void terminate();

private:
    enum class State
    {
        Fresh,
        Initializing,
        Ready,
        Failed,
        Terminated
    };

    void _fail(const std::string& why, ErrorLog& errors);

    std::shared_ptr<ProviderModule> _module;
    std::string _name;

    std::mutex _mutex;
    std::condition_variable _changed;
    State _state = State::Fresh;
    std::thread::id _initThread;
    Pegasus::CIMProvider* _provider = nullptr;
    std::string _error;
    unsigned _inFlight = 0;
};

/** Kinds of provider a capability registers (PG_ProviderCapabilities.ProviderType). */
enum ProviderKind
{
    KindInstance = 2,
    KindAssociation = 3,
    KindMethod = 5
};

/** A provider serving one class in one namespace for one kind of request. */
struct Registration
{
    ProviderEntry* provider;
    Pegasus::CIMName className;
};

/**
    The table built from registration instances: which provider serves which
    class in which namespace for which kind of request. Filled while loading,
    read without locks afterwards.
*/
class ProviderRegistry
{
public:
    ProviderRegistry(ErrorLog& errors);
    ~ProviderRegistry();

    void addSearchPath(const std::string& dir);

    /** A module without a library: its providers come from create. */
    void addBuiltInModule(const std::string& name, CreateProviderFunction create);

    /** Takes the PG_ProviderModule, PG_Provider and PG_ProviderCapabilities
        instances of one registration file (others are ignored). */
    void registerInstances(const std::vector<Pegasus::CIMInstance>& instances,
                           const std::string& source);

    const Registration* find(ProviderKind kind, const Pegasus::CIMNamespaceName& ns,
                             const Pegasus::CIMName& className) const;

    /** Association registrations of a namespace, in registration order. */
    std::vector<Registration> associationProviders(const Pegasus::CIMNamespaceName& ns) const;

    void terminateAll();

private:
    void _addModule(const Pegasus::CIMInstance& instance, const std::string& source);
    void _addProvider(const Pegasus::CIMInstance& instance, const std::string& source);
    void _addCapability(const Pegasus::CIMInstance& instance, const std::string& source);
    void _openModule(ProviderModule& module);
    std::vector<std::string> _searchPath() const;
    static std::string _key(const Pegasus::CIMNamespaceName& ns, const Pegasus::CIMName& className);

    ErrorLog& _errors;
    std::vector<std::string> _extraDirs;
    std::map<std::string, std::shared_ptr<ProviderModule>> _modules;        // by lower-case name
    std::map<std::string, std::unique_ptr<ProviderEntry>> _providers;       // "module/provider", lower case
    std::vector<ProviderEntry*> _providerOrder;
    std::map<std::string, Registration> _byKind[3];                         // instance, association, method
    std::map<std::string, std::vector<Registration>> _associationsByNs;     // lower-case namespace
};

} // namespace cimom

#endif
