// The internal cache instance in root/PG_Internal: its six identity methods
// answer from the array's model, reached through the object manager as the
// statistics module reaches them (local client first, handle second).

#include "SiblingsFixture.h"

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>

#include <orvsim.h>

PEGASUS_USING_PEGASUS;
using namespace orvsib_test;

namespace
{

const CIMNamespaceName INTERNAL("root/PG_Internal");

CIMObjectPath cachePath(const char* instanceID = "localhost-InternalCache")
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), instanceID, CIMKeyBinding::STRING));
    return CIMObjectPath("localhost", INTERNAL, CIMName("ORV_InternalCache"), keys);
}

struct MethodCase
{
    const char* method;
    const char* outName;
    CIMType type;
    CIMValue expected; // what SMALL_MODEL states
};

std::vector<MethodCase> methodCases()
{
    return {
        {"GetSystemName", "SystemName", CIMTYPE_STRING, CIMValue(String("ORV-TEST-7"))},
        {"GetSystemID", "SystemID", CIMTYPE_UINT32, CIMValue(Uint32(424242))},
        {"IsQuadPortSystem", "IsQuadPort", CIMTYPE_UINT8, CIMValue(Uint8(0))},
        {"GetSystemType", "SystemType", CIMTYPE_SINT32, CIMValue(Sint32(-3))},
        {"GetSystemHostName", "SystemHostName", CIMTYPE_STRING,
         CIMValue(String("orv-test-7.example.net"))},
        {"GetSystemAddress", "SystemAddress", CIMTYPE_STRING, CIMValue(String("192.0.2.17"))},
    };
}

class InternalCache : public ::testing::Test
{
protected:
    void SetUp() override
    {
        objectManager();
        loadModel(SMALL_MODEL);
    }
    void TearDown() override
    {
        orvsim_reset();
    }
};

} // namespace

TEST_F(InternalCache, EachMethodAnswersOneTypedOutputFromTheModel)
{
    for (const MethodCase& c : methodCases())
    {
        SCOPED_TRACE(c.method);
        Array<CIMParamValue> out;
        const CIMValue result = objectManager().invokeMethod(
            contextFor(""), INTERNAL, cachePath(), CIMName(c.method), Array<CIMParamValue>(), out);
        EXPECT_TRUE(result == CIMValue(Uint32(0)));
        ASSERT_EQ(1u, out.size());
        EXPECT_EQ(String(c.outName), out[0].getParameterName());
        EXPECT_EQ(c.type, out[0].getValue().getType());
        EXPECT_TRUE(out[0].getValue() == c.expected) << out[0].getValue().toString();
    }
}

TEST_F(InternalCache, AnswersTheLocalClientAsTheStatisticsModuleAsksIt)
{
    CIMClient client;
    client.connectLocal();
    for (const MethodCase& c : methodCases())
    {
        Array<CIMParamValue> out;
        client.invokeMethod(INTERNAL, cachePath(), CIMName(c.method), Array<CIMParamValue>(), out);
        ASSERT_EQ(1u, out.size()) << c.method;
        EXPECT_TRUE(out[0].getValue() == c.expected) << c.method;
    }
    client.disconnect();
}

TEST_F(InternalCache, FollowsAModelChange)
{
    loadModel(R"({"system": {"name": "OTHER-ARRAY", "hostName": "other.example.net"}})");
    Array<CIMParamValue> out;
    objectManager().invokeMethod(contextFor(""), INTERNAL, cachePath(), CIMName("GetSystemName"),
                                 Array<CIMParamValue>(), out);
    ASSERT_EQ(1u, out.size());
    EXPECT_TRUE(out[0].getValue() == CIMValue(String("OTHER-ARRAY")));
}

TEST_F(InternalCache, ServesItsOneInstance)
{
    const Array<CIMObjectPath> names =
        objectManager().enumerateInstanceNames(contextFor(""), INTERNAL, CIMName("ORV_InternalCache"));
    ASSERT_EQ(1u, names.size());
    ASSERT_EQ(1u, names[0].getKeyBindings().size());
    EXPECT_EQ(String("localhost-InternalCache"), names[0].getKeyBindings()[0].getValue());

    const CIMInstance instance = objectManager().getInstance(
        contextFor(""), INTERNAL, names[0], false, false, false, CIMPropertyList());
    const Uint32 pos = instance.findProperty(CIMName("InstanceID"));
    ASSERT_NE(PEG_NOT_FOUND, pos);
    EXPECT_TRUE(instance.getProperty(pos).getValue() ==
                CIMValue(String("localhost-InternalCache")));

    const Array<CIMInstance> all = objectManager().enumerateInstances(
        contextFor(""), INTERNAL, CIMName("ORV_InternalCache"), true, false, false, false,
        CIMPropertyList());
    EXPECT_EQ(1u, all.size());
}

TEST_F(InternalCache, RefusesWhatItCannotAnswer)
{
    struct Case
    {
        const char* description;
        std::function<void()> call;
        CIMStatusCode expected;
    };
    Array<CIMParamValue> out;
    Array<CIMParamValue> someInput;
    someInput.append(CIMParamValue("SystemName", CIMValue(String("x"))));
    const std::vector<Case> cases = {
        {"another instance", [&] {
             objectManager().getInstance(contextFor(""), INTERNAL, cachePath("other-InternalCache"),
                                         false, false, false, CIMPropertyList());
         }, CIM_ERR_NOT_FOUND},
        {"a method of another instance", [&] {
             objectManager().invokeMethod(contextFor(""), INTERNAL, cachePath("x"),
                                          CIMName("GetSystemName"), Array<CIMParamValue>(), out);
         }, CIM_ERR_NOT_FOUND},
        {"a method the class lacks", [&] {
             objectManager().invokeMethod(contextFor(""), INTERNAL, cachePath(),
                                          CIMName("GetSystemColour"), Array<CIMParamValue>(), out);
         }, CIM_ERR_METHOD_NOT_FOUND},
        {"input to a method that takes none", [&] {
             objectManager().invokeMethod(contextFor(""), INTERNAL, cachePath(),
                                          CIMName("GetSystemName"), someInput, out);
         }, CIM_ERR_INVALID_PARAMETER},
        {"a user the array does not know", [&] {
             objectManager().invokeMethod(contextFor("mallory"), INTERNAL, cachePath(),
                                          CIMName("GetSystemName"), Array<CIMParamValue>(), out);
         }, CIM_ERR_ACCESS_DENIED},
    };
    for (const Case& c : cases)
    {
        std::string message;
        EXPECT_EQ(c.expected, statusOf(c.call, &message)) << c.description << ": " << message;
    }
}
