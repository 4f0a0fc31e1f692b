// System identity helpers against an internal cache that answers oddly, and
// with and without a local connection.

#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include "ModuleFixture.h"
#include "ORV_Common.h"
#include "orvsim.h"

using orvtest::captureLog;
using orvtest::str;

namespace
{

// Answers the internal-cache methods with a fixed output list and the
// system's names with a fixed list; everything else is refused.
class FakeCimom : public CIMOMDispatcher
{
public:
    Array<CIMParamValue> methodOut;
    bool failMethods = false;
    bool failNames = false;
    Array<CIMObjectPath> systemNames;
    int methodCalls = 0;
    std::string lastMethod;

    CIMValue invokeMethod(const OperationContext&, const CIMNamespaceName& ns,
                          const CIMObjectPath& path, const CIMName& methodName,
                          const Array<CIMParamValue>&, Array<CIMParamValue>& out) override
    {
        methodCalls++;
        lastMethod = str(methodName.getString());
        if (failMethods)
        {
            throw CIMException(CIM_ERR_FAILED, "cache down");
        }
        EXPECT_EQ("root/PG_Internal", str(ns.getString()));
        EXPECT_EQ("localhost-InternalCache",
                  str(ORV_Common::getStringProperty(path, "InstanceID")));
        out = methodOut;
        return CIMValue(Uint32(0));
    }

    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext&,
                                                const CIMNamespaceName&,
                                                const CIMName&) override
    {
        if (failNames)
        {
            throw CIMException(CIM_ERR_FAILED, "no names here");
        }
        return systemNames;
    }

    CIMClass getClass(const OperationContext&, const CIMNamespaceName&, const CIMName&, Boolean,
                      Boolean, Boolean, const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
    Array<CIMClass> enumerateClasses(const OperationContext&, const CIMNamespaceName&,
                                     const CIMName&, Boolean, Boolean, Boolean,
                                     Boolean) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
    Array<CIMName> enumerateClassNames(const OperationContext&, const CIMNamespaceName&,
                                       const CIMName&, Boolean) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
    CIMInstance getInstance(const OperationContext&, const CIMNamespaceName&,
                            const CIMObjectPath&, Boolean, Boolean, Boolean,
                            const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
    Array<CIMInstance> enumerateInstances(const OperationContext&, const CIMNamespaceName&,
                                          const CIMName&, Boolean, Boolean, Boolean, Boolean,
                                          const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
    Array<CIMObject> associators(const OperationContext&, const CIMNamespaceName&,
                                 const CIMObjectPath&, const CIMName&, const CIMName&,
                                 const String&, const String&, Boolean, Boolean,
                                 const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
    Array<CIMObjectPath> associatorNames(const OperationContext&, const CIMNamespaceName&,
                                         const CIMObjectPath&, const CIMName&, const CIMName&,
                                         const String&, const String&) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
    Array<CIMObject> references(const OperationContext&, const CIMNamespaceName&,
                                const CIMObjectPath&, const CIMName&, const String&, Boolean,
                                Boolean, const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
    Array<CIMObjectPath> referenceNames(const OperationContext&, const CIMNamespaceName&,
                                        const CIMObjectPath&, const CIMName&,
                                        const String&) override
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED);
    }
};

Array<CIMParamValue> answer(std::initializer_list<CIMParamValue> list)
{
    Array<CIMParamValue> a;
    for (const CIMParamValue& p : list)
    {
        a.append(p);
    }
    return a;
}

// The local connection reaches `local`; `viaHandle` stands behind the handle.
class IdentityTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        _previous = Sdk::getLocalDispatcher();
        Sdk::setLocalDispatcher(&local);
        handle = Sdk::makeCIMOMHandle(&viaHandle);
        orvsim_reset();
    }
    void TearDown() override
    {
        Sdk::setLocalDispatcher(_previous);
    }

    FakeCimom local;
    FakeCimom viaHandle;
    CIMOMHandle handle;

private:
    CIMOMDispatcher* _previous = nullptr;
};

TEST_F(IdentityTest, OnlyAWellNamedNonNullFirstParameterCounts)
{
    struct Case
    {
        const char* what;
        Array<CIMParamValue> out;
        const char* systemName;
    } cases[] = {
        {"plain answer", answer({CIMParamValue("SystemName", CIMValue(String("S1")))}), "S1"},
        {"other case", answer({CIMParamValue("systemname", CIMValue(String("S1")))}), "S1"},
        {"null value", answer({CIMParamValue("SystemName", CIMValue(CIMTYPE_STRING, false))}),
         ""},
        {"named second", answer({CIMParamValue("Other", CIMValue(String("x"))),
                                 CIMParamValue("SystemName", CIMValue(String("S1")))}),
         ""},
        {"nothing", answer({}), ""},
    };
    for (Case& c : cases)
    {
        local.methodOut = c.out;
        EXPECT_EQ(c.systemName, str(ORV_Common::getSystemName(handle))) << c.what;
        EXPECT_EQ(c.systemName, str(ORV_Common::getSystemName())) << c.what;
    }
    EXPECT_EQ(0, viaHandle.methodCalls);

    local.methodOut = answer({CIMParamValue("SystemName", CIMValue(String("S1"))),
                              CIMParamValue("SystemHostName", CIMValue(String("h1")))});
    EXPECT_EQ("", str(ORV_Common::getSystemHostName(handle)));
    EXPECT_EQ("GetSystemHostName", local.lastMethod);
}

TEST_F(IdentityTest, NumericAnswersDefaultToZero)
{
    local.methodOut = answer({CIMParamValue("SystemID", CIMValue(Uint32(1234)))});
    EXPECT_EQ(1234u, ORV_Common::getSystemID());
    local.methodOut = answer({CIMParamValue("IsQuadPort", CIMValue(Uint8(1)))});
    EXPECT_EQ(1, ORV_Common::isQuadPortSystem(handle));
    local.methodOut = answer({});
    EXPECT_EQ(0u, ORV_Common::getSystemID());
    EXPECT_EQ(0, ORV_Common::getSystemType());
}

TEST_F(IdentityTest, FallbackToTheHandleWhereAllowed)
{
    local.failMethods = true;
    viaHandle.methodOut = answer({CIMParamValue("SystemName", CIMValue(String("viaCimom")))});
    EXPECT_EQ("viaCimom", str(ORV_Common::getSystemName(handle)));
    EXPECT_EQ(1, viaHandle.methodCalls);

    // The host name and the handle-less forms have no fallback.
    EXPECT_THROW(ORV_Common::getSystemHostName(handle), CIMException);
    EXPECT_THROW(ORV_Common::getSystemName(), CIMException);
    EXPECT_EQ(1, viaHandle.methodCalls);

    viaHandle.methodOut = answer({CIMParamValue("SystemAddress", CIMValue(String("10.0.0.1")))});
    EXPECT_EQ("10.0.0.1", str(ORV_Common::getSystemAddress(handle)));
}

TEST_F(IdentityTest, NoLocalConnection)
{
    Sdk::setLocalDispatcher(nullptr);
    viaHandle.methodOut = answer({CIMParamValue("SystemName", CIMValue(String("viaCimom")))});
    EXPECT_EQ("viaCimom", str(ORV_Common::getSystemName(handle)));
    EXPECT_ANY_THROW(ORV_Common::getSystemHostName(handle));

    // When the handle fails too, its error reaches the caller.
    viaHandle.failMethods = true;
    EXPECT_THROW(ORV_Common::getSystemName(handle), CIMException);
}

CIMObjectPath systemPath()
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), "ORV_StorageSystem",
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("Name"), "S1", CIMKeyBinding::STRING));
    return CIMObjectPath("somewhere", CIMNamespaceName("root/x"), CIMName("ORV_StorageSystem"),
                         keys);
}

TEST_F(IdentityTest, SystemObjectPathTakesTheHostNameAndNamespace)
{
    local.methodOut = answer({CIMParamValue("SystemHostName", CIMValue(String("array1")))});
    local.systemNames.append(systemPath());
    CIMObjectPath path = ORV_Common::getSystemObjectPath(handle);
    EXPECT_EQ("array1", str(path.getHost()));
    EXPECT_EQ("root/orv", str(path.getNameSpace().getString()));
    EXPECT_EQ(2u, path.getKeyBindings().size());
}

TEST_F(IdentityTest, SystemObjectPathFallsBackAndReportsAbsence)
{
    local.methodOut = answer({CIMParamValue("SystemHostName", CIMValue(String("array1")))});
    local.failNames = true;
    viaHandle.systemNames.append(systemPath());
    CIMObjectPath path;
    std::string log = captureLog([&]() { path = ORV_Common::getSystemObjectPath(handle); });
    EXPECT_NE(std::string::npos,
              log.find("ORV_Common::getSystemObjectPath: no names here. Trying via cimom.\n"))
        << log;
    EXPECT_EQ("array1", str(path.getHost()));

    viaHandle.systemNames.clear();
    log = captureLog([&]() { path = ORV_Common::getSystemObjectPath(handle); });
    EXPECT_NE(std::string::npos, log.find("cannot get at system object path\n"));
    EXPECT_EQ(std::string::npos, log.find("<--ORV_Common::getSystemObjectPath()"));
    EXPECT_EQ(0u, path.getKeyBindings().size());

    // The handle's own failure passes to the caller here...
    viaHandle.failNames = true;
    EXPECT_THROW(ORV_Common::getSystemObjectPath(handle), CIMException);
    // ...but is swallowed by the package and view forms.
    log = captureLog([&]() { path = ORV_Common::getSystemViewObjectPath(handle); });
    EXPECT_NE(std::string::npos, log.find("ORV_Common::getSystemViewObjectPath: no names here.\n"));
    EXPECT_NE(std::string::npos, log.find("cannot get at system view object path\n"));
}

TEST(SystemIPAddr, RejectsUnknownTypes)
{
    std::string log = captureLog([]() { EXPECT_EQ("", str(ORV_Common::getSystemIPAddr(7))); });
    EXPECT_NE(std::string::npos,
              log.find("ORV_Common, getSystemIPAddr: Invalid IP type parameter!\n"));
    orvsim_identity_t id;
    ASSERT_EQ(0, orvsim_get_identity(&id));
    EXPECT_EQ(id.ipv4, str(ORV_Common::getSystemIPAddr(IP_TYPE_V4)));
}

} // namespace
