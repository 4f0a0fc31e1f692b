// The internal cache instance in root/PG_Internal: its identity methods answer
// from the model, through the object manager and through a local client as
// the statistics module asks them.

#include "ProviderSupport.h"
#include "SiblingsFixture.h"

#include <orvapi.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>

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

Array<CIMParamValue> invoke(const char* method, const char* user = "",
                            const CIMObjectPath& path = cachePath(),
                            const Array<CIMParamValue>& in = Array<CIMParamValue>())
{
    Array<CIMParamValue> out;
    const CIMValue result =
        objectManager().invokeMethod(contextFor(user), INTERNAL, path, CIMName(method), in, out);
    EXPECT_TRUE(result == CIMValue(Uint32(0))) << method;
    return out;
}

using InternalCache = SmallModelTest;

} // namespace

TEST_F(InternalCache, EachMethodAnswersOneTypedOutputFromTheModel)
{
    struct Case
    {
        const char* method;
        const char* outName;
        CIMValue expected; // from SMALL_MODEL, with the type the callers read
    };
    const std::vector<Case> cases = {
        {"GetSystemName", "SystemName", CIMValue(String("ORV-TEST-7"))},
        {"GetSystemID", "SystemID", CIMValue(Uint32(424242))},
        {"IsQuadPortSystem", "IsQuadPort", CIMValue(Uint8(0))},
        {"GetSystemType", "SystemType", CIMValue(Sint32(-3))},
        {"GetSystemHostName", "SystemHostName", CIMValue(String("orv-test-7.example.net"))},
        {"GetSystemAddress", "SystemAddress", CIMValue(String("192.0.2.17"))},
    };
    CIMClient client;
    client.connectLocal();
    for (const Case& c : cases)
    {
        Array<CIMParamValue> viaClient;
        client.invokeMethod(INTERNAL, cachePath(), CIMName(c.method), Array<CIMParamValue>(),
                            viaClient);
        for (const Array<CIMParamValue>& out : {invoke(c.method), viaClient})
        {
            ASSERT_EQ(1u, out.size()) << c.method;
            EXPECT_EQ(String(c.outName), out[0].getParameterName());
            EXPECT_TRUE(out[0].getValue() == c.expected)
                << c.method << ": " << out[0].getValue().toString();
        }
    }
    client.disconnect();
}

TEST_F(InternalCache, FollowsAModelChange)
{
    loadModel(R"({"system": {"name": "OTHER-ARRAY"}})");
    const Array<CIMParamValue> out = invoke("GetSystemName");
    ASSERT_EQ(1u, out.size());
    EXPECT_TRUE(out[0].getValue() == CIMValue(String("OTHER-ARRAY")));
}

TEST_F(InternalCache, ServesItsOneInstance)
{
    const Array<CIMObjectPath> names = objectManager().enumerateInstanceNames(
        contextFor(""), INTERNAL, CIMName("ORV_InternalCache"));
    ASSERT_EQ(1u, names.size());
    EXPECT_EQ(String("localhost-InternalCache"), keyOf(names[0], "InstanceID"));
    const CIMInstance instance = objectManager().getInstance(
        contextFor(""), INTERNAL, names[0], false, false, false, CIMPropertyList());
    EXPECT_TRUE(instance.getProperty(instance.findProperty("InstanceID")).getValue() ==
                CIMValue(String("localhost-InternalCache")));
    EXPECT_EQ(1u, objectManager()
                      .enumerateInstances(contextFor(""), INTERNAL, CIMName("ORV_InternalCache"),
                                          true, false, false, false, CIMPropertyList())
                      .size());
}

TEST_F(InternalCache, RefusesWhatItCannotAnswer)
{
    Array<CIMParamValue> someInput;
    someInput.append(CIMParamValue("SystemName", CIMValue(String("x"))));
    const std::vector<std::pair<std::function<void()>, CIMStatusCode>> cases = {
        {[]
         {
             objectManager().getInstance(contextFor(""), INTERNAL, cachePath("other"), false, false,
                                         false, CIMPropertyList());
         },
         CIM_ERR_NOT_FOUND},
        {[] { invoke("GetSystemName", "", cachePath("other")); }, CIM_ERR_NOT_FOUND},
        {[] { invoke("GetSystemColour"); }, CIM_ERR_METHOD_NOT_AVAILABLE},
        {[&] { invoke("GetSystemName", "", cachePath(), someInput); }, CIM_ERR_INVALID_PARAMETER},
        {[] { invoke("GetSystemName", "mallory"); }, CIM_ERR_ACCESS_DENIED},
    };
    for (size_t i = 0; i < cases.size(); i++)
    {
        std::string message;
        EXPECT_EQ(cases[i].second, statusOf(cases[i].first, &message)) << i << ": " << message;
    }
}

TEST_F(InternalCache, AnswersTheServersOwnAccountThatTheArrayDoesNotList)
{
    // A server with authentication on sends a provider's local requests under
    // the provider agent's OS account; the module's initialize asks this cache
    // that way, whether or not the array has a user of that name.
    const String account = orvsib::serverAccount();
    ASSERT_GT(account.size(), 0u);
    const CString accountName = account.getCString();
    ASSERT_NE(0, api_orvOpenForCimserver(accountName))
        << "the model lists " << (const char*)accountName;

    const Array<CIMParamValue> out = invoke("GetSystemName", accountName);
    ASSERT_EQ(1u, out.size());
    EXPECT_TRUE(out[0].getValue() == CIMValue(String("ORV-TEST-7")));
    EXPECT_EQ(CIM_ERR_SUCCESS, statusOf(
                                   [&]
                                   {
                                       objectManager().getInstance(contextFor(accountName),
                                                                   INTERNAL, cachePath(), false,
                                                                   false, false, CIMPropertyList());
                                   }));

    // Only that account: other names the array does not list stay refused.
    EXPECT_EQ(CIM_ERR_ACCESS_DENIED, statusOf([] { invoke("GetSystemName", "mallory"); }));
}
