#ifndef OM_TESTSUPPORT_H
#define OM_TESTSUPPORT_H

#include <cimom/ObjectManager.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace omtest
{

extern const Pegasus::CIMNamespaceName NS;

/** An object manager with the test classes and the test providers loaded. */
std::unique_ptr<cimom::ObjectManager> makeObjectManager();

/** Calls recorded by the test provider module, and a way to clear them. */
std::vector<std::string> providerEvents();
void resetProviderEvents();
int countEvents(const std::string& event);

/** Events of the given prefix, in order ("enumerateInstances:" ...). */
std::vector<std::string> eventsStartingWith(const std::string& prefix);

Pegasus::OperationContext contextFor(const char* user, const char* address = nullptr);

Pegasus::CIMObjectPath elementPath(const char* className, const char* id);

/** The Id keys of paths or instances, sorted. */
std::vector<std::string> ids(const Pegasus::Array<Pegasus::CIMObjectPath>& paths);
std::vector<std::string> ids(const Pegasus::Array<Pegasus::CIMInstance>& instances);
std::vector<std::string> ids(const Pegasus::Array<Pegasus::CIMObject>& objects);

/** Sorted lower-case property names of an instance. */
std::vector<std::string> propertyNames(const Pegasus::CIMInstance& instance);

std::string str(const Pegasus::String& s);

/** The CIM error an operation ends with (CIM_ERR_SUCCESS if none). */
struct CimError
{
    Pegasus::CIMStatusCode code = Pegasus::CIM_ERR_SUCCESS;
    std::string message;
};

template <class Operation> CimError cimError(Operation&& operation)
{
    CimError result;
    try
    {
        operation();
    }
    catch (const Pegasus::CIMException& e)
    {
        result.code = e.getCode();
        result.message = str(e.getMessage());
    }
    return result;
}

} // namespace omtest

#endif
