#ifndef ORV_SIBLINGS_TESTS_SiblingsFixture_h
#define ORV_SIBLINGS_TESTS_SiblingsFixture_h

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>
#include <cimom/ObjectManager.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace orvsib_test
{

// The object manager of the test program, loaded with the sibling module's
// class and registration MOF as a host loads them, and made local.
cimom::ObjectManager& objectManager();

// An object manager holding the same classes (no providers) that counts its
// getClass calls and can answer them slowly, so first requests overlap.
class CountingObjectManager : public cimom::ObjectManager
{
public:
    CountingObjectManager();
    std::atomic<int> getClassCalls{0};
    std::chrono::milliseconds delay{0};

    Pegasus::CIMClass getClass(const Pegasus::OperationContext& context,
                               const Pegasus::CIMNamespaceName& nameSpace,
                               const Pegasus::CIMName& className, Pegasus::Boolean localOnly,
                               Pegasus::Boolean includeQualifiers,
                               Pegasus::Boolean includeClassOrigin,
                               const Pegasus::CIMPropertyList& propertyList) override;
};

Pegasus::OperationContext contextFor(const char* user);

// Replaces the simulated array's model, failing the test when it is refused.
void loadModel(const std::string& json);

// The small model most tests run on (see SiblingsFixture.cpp).
extern const char* const SMALL_MODEL;

// Value of a key binding ("<none>" when absent), and a copy of path with the
// key set to value, or removed when value is null.
Pegasus::String keyOf(const Pegasus::CIMObjectPath& path, const char* name);
Pegasus::CIMObjectPath withKey(const Pegasus::CIMObjectPath& path, const char* name,
                               const char* value);

template <typename T> std::vector<T> toVector(const Pegasus::Array<T>& array)
{
    std::vector<T> out;
    for (Pegasus::Uint32 i = 0; i < array.size(); i++)
    {
        out.push_back(array[i]);
    }
    return out;
}

// Status of the CIMException that work throws (CIM_ERR_SUCCESS for none).
template <typename Work> Pegasus::CIMStatusCode statusOf(Work work, std::string* message = nullptr)
{
    try
    {
        work();
    }
    catch (const Pegasus::CIMException& error)
    {
        if (message)
        {
            *message = (const char*)error.getMessage().getCString();
        }
        return error.getCode();
    }
    return Pegasus::CIM_ERR_SUCCESS;
}

// Runs each test on SMALL_MODEL and leaves the default model behind.
class SmallModelTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;
};

} // namespace orvsib_test

#endif
