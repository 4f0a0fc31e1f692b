#ifndef ORV_TESTS_ModuleFixture_h
#define ORV_TESTS_ModuleFixture_h

// In-process test environment of the statistics module: an object manager
// loaded from schema/load-order.txt (classes, the sibling stand-ins and this
// module) over the simulated management API, and helpers to run operations
// as a given user.

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <cimom/ObjectManager.h>

namespace orvtest
{

using Pegasus::Array;
using Pegasus::CIMInstance;
using Pegasus::CIMName;
using Pegasus::CIMObjectPath;
using Pegasus::CIMPropertyList;
using Pegasus::CIMStatusCode;
using Pegasus::OperationContext;
using Pegasus::String;

// Users of the simulator's default model.
extern const char* const READER_USER;  // may read and call GetStatisticsCollection
extern const char* const REFUSED_USER; // unknown to the array

// What an operation threw, if anything.
struct CimOutcome
{
    bool thrown = false;
    bool isCimException = false;
    CIMStatusCode code = Pegasus::CIM_ERR_SUCCESS;
    std::string message;
};

// Runs fn and reports the exception it threw.
CimOutcome runCatching(const std::function<void()>& fn);

// Everything log_message wrote while fn ran (all levels); fn's exceptions
// pass through after the log is taken.
std::string captureLog(const std::function<void()>& fn);

std::string str(const String& s);

// A context as the server makes it for a request of `user`.
OperationContext contextFor(const String& user);

// Path of an instance of the module's namespace with one string InstanceID
// key and no host.
CIMObjectPath instancePath(const CIMName& className, const String& instanceID);
CIMObjectPath classPath(const CIMName& className);

// A fresh object manager loaded like the real server; not made local.
std::unique_ptr<cimom::ObjectManager> makeObjectManager();

// The process-wide object manager, made local on first use (so that the
// identity helpers reach it over connectLocal).
cimom::ObjectManager& sharedObjectManager();

// Creates a provider of this module by name, as the server does.
Pegasus::CIMProvider* createProvider(const String& name);

// Identity of the simulated storage system.
std::string simSystemName();
std::string simHostName();

class ModuleFixture : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    cimom::ObjectManager& om()
    {
        return sharedObjectManager();
    }

    // Operations through the object manager as `user`, in root/orv.
    Array<CIMInstance> enumerateInstances(const String& user, const CIMName& className,
                                          const CIMPropertyList& propertyList = CIMPropertyList());
    Array<CIMObjectPath> enumerateInstanceNames(const String& user, const CIMName& className);
    CIMInstance getInstance(const String& user, const CIMObjectPath& path,
                            const CIMPropertyList& propertyList = CIMPropertyList());

    // Replaces the simulated model (JSON text); fails the test on error.
    void loadModelJson(const std::string& json);
    // Makes the named management call fail with status.
    void injectFault(const char* call, int status);
};

} // namespace orvtest

#endif
