#ifndef ORV_SIBLINGS_TESTS_SiblingsFixture_h
#define ORV_SIBLINGS_TESTS_SiblingsFixture_h

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>
#include <cimom/ObjectManager.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace orvsib_test
{

// One object manager for the whole test program, loaded with the class and
// registration MOF of the sibling module the way a host loads them.
cimom::ObjectManager& objectManager();

// A context carrying a user, as the server builds for a request.
Pegasus::OperationContext contextFor(const char* user);

// Loads a JSON model into the simulator, failing the test when it is refused.
void loadModel(const std::string& json);

// The small model most tests run on (see SiblingsFixture.cpp).
extern const char* const SMALL_MODEL;

// Pegasus arrays have no iterators; tests walk copies.
template <typename T> std::vector<T> toVector(const Pegasus::Array<T>& array)
{
    std::vector<T> out;
    for (Pegasus::Uint32 i = 0; i < array.size(); i++)
    {
        out.push_back(array[i]);
    }
    return out;
}

// Status code of the CIMException that work throws; CIM_ERR_SUCCESS when it
// throws none. Keeps the message for assertions.
template <typename Work>
Pegasus::CIMStatusCode statusOf(Work work, std::string* message = nullptr)
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

// Forwards to the object manager and counts getClass calls; can slow them
// down so that concurrent first requests overlap.
class CountingDispatcher : public Pegasus::CIMOMDispatcher
{
public:
    explicit CountingDispatcher(Pegasus::CIMOMDispatcher& target);

    std::atomic<int> getClassCalls{0};
    std::chrono::milliseconds getClassDelay{0};

    Pegasus::CIMClass getClass(const Pegasus::OperationContext& context,
                               const Pegasus::CIMNamespaceName& nameSpace,
                               const Pegasus::CIMName& className, Pegasus::Boolean localOnly,
                               Pegasus::Boolean includeQualifiers,
                               Pegasus::Boolean includeClassOrigin,
                               const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMClass> enumerateClasses(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin) override;
    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance) override;
    Pegasus::CIMInstance getInstance(const Pegasus::OperationContext& context,
                                     const Pegasus::CIMNamespaceName& nameSpace,
                                     const Pegasus::CIMObjectPath& instanceName,
                                     Pegasus::Boolean localOnly,
                                     Pegasus::Boolean includeQualifiers,
                                     Pegasus::Boolean includeClassOrigin,
                                     const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className) override;
    Pegasus::Array<Pegasus::CIMObject> associators(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole) override;
    Pegasus::Array<Pegasus::CIMObject> references(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role) override;
    Pegasus::CIMValue invokeMethod(const Pegasus::OperationContext& context,
                                   const Pegasus::CIMNamespaceName& nameSpace,
                                   const Pegasus::CIMObjectPath& instanceName,
                                   const Pegasus::CIMName& methodName,
                                   const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
                                   Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;

private:
    Pegasus::CIMOMDispatcher& _target;
};

} // namespace orvsib_test

#endif
