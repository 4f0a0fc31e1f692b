// The provider-facing API: CIMOMHandle and the local CIMClient reaching an object
// manager, the response handler protocol, and a provider written only against the
// standard provider headers.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/ProviderException.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>
#include <Pegasus/Sdk/CollectingResponseHandlers.h>

PEGASUS_USING_PEGASUS;

namespace
{

std::string str(const String& s)
{
    return std::string((const char*)s.getCString());
}

// Records what reached it; answers with fixed results.
class RecordingDispatcher : public CIMOMDispatcher
{
public:
    struct Call
    {
        std::string operation;
        std::string nameSpace;
        std::string target;
        std::string flags;
        bool hasIdentity = false;
        std::string user;
    };

    std::vector<Call> calls;

    CIMClass getClass(const OperationContext& ctx, const CIMNamespaceName& ns,
                      const CIMName& className, Boolean localOnly, Boolean iq, Boolean ico,
                      const CIMPropertyList&) override
    {
        _record(ctx, "getClass", ns, className.getString(), _flags({localOnly, iq, ico}));
        return CIMClass(className);
    }
    Array<CIMClass> enumerateClasses(const OperationContext& ctx, const CIMNamespaceName& ns,
                                     const CIMName& className, Boolean deep, Boolean localOnly,
                                     Boolean iq, Boolean ico) override
    {
        _record(ctx, "enumerateClasses", ns, className.getString(),
                _flags({deep, localOnly, iq, ico}));
        return Array<CIMClass>();
    }
    Array<CIMName> enumerateClassNames(const OperationContext& ctx, const CIMNamespaceName& ns,
                                       const CIMName& className, Boolean deep) override
    {
        _record(ctx, "enumerateClassNames", ns, className.getString(), _flags({deep}));
        return Array<CIMName>();
    }
    CIMInstance getInstance(const OperationContext& ctx, const CIMNamespaceName& ns,
                            const CIMObjectPath& path, Boolean localOnly, Boolean iq, Boolean ico,
                            const CIMPropertyList&) override
    {
        _record(ctx, "getInstance", ns, path.toString(), _flags({localOnly, iq, ico}));
        CIMInstance inst(path.getClassName());
        inst.setPath(path);
        return inst;
    }
    Array<CIMInstance> enumerateInstances(const OperationContext& ctx, const CIMNamespaceName& ns,
                                          const CIMName& className, Boolean deep,
                                          Boolean localOnly, Boolean iq, Boolean ico,
                                          const CIMPropertyList& pl) override
    {
        _record(ctx, "enumerateInstances", ns, className.getString(),
                _flags({deep, localOnly, iq, ico, pl.isNull()}));
        Array<CIMInstance> result;
        result.append(CIMInstance(className));
        result.append(CIMInstance(className));
        return result;
    }
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& ctx,
                                                const CIMNamespaceName& ns,
                                                const CIMName& className) override
    {
        _record(ctx, "enumerateInstanceNames", ns, className.getString(), "");
        Array<CIMObjectPath> result;
        result.append(CIMObjectPath(String(), ns, className));
        return result;
    }
    Array<CIMObject> associators(const OperationContext& ctx, const CIMNamespaceName& ns,
                                 const CIMObjectPath& path, const CIMName& assocClass,
                                 const CIMName& resultClass, const String& role,
                                 const String& resultRole, Boolean iq, Boolean ico,
                                 const CIMPropertyList&) override
    {
        _record(ctx, "associators", ns,
                path.toString() + "|" + assocClass.getString() + "|" + resultClass.getString() +
                    "|" + role + "|" + resultRole,
                _flags({iq, ico}));
        return Array<CIMObject>();
    }
    Array<CIMObjectPath> associatorNames(const OperationContext& ctx, const CIMNamespaceName& ns,
                                         const CIMObjectPath& path, const CIMName& assocClass,
                                         const CIMName& resultClass, const String& role,
                                         const String& resultRole) override
    {
        _record(ctx, "associatorNames", ns,
                path.toString() + "|" + assocClass.getString() + "|" + resultClass.getString() +
                    "|" + role + "|" + resultRole,
                "");
        return Array<CIMObjectPath>();
    }
    Array<CIMObject> references(const OperationContext& ctx, const CIMNamespaceName& ns,
                                const CIMObjectPath& path, const CIMName& resultClass,
                                const String& role, Boolean iq, Boolean ico,
                                const CIMPropertyList&) override
    {
        _record(ctx, "references", ns,
                path.toString() + "|" + resultClass.getString() + "|" + role, _flags({iq, ico}));
        return Array<CIMObject>();
    }
    Array<CIMObjectPath> referenceNames(const OperationContext& ctx, const CIMNamespaceName& ns,
                                        const CIMObjectPath& path, const CIMName& resultClass,
                                        const String& role) override
    {
        _record(ctx, "referenceNames", ns,
                path.toString() + "|" + resultClass.getString() + "|" + role, "");
        return Array<CIMObjectPath>();
    }
    CIMValue invokeMethod(const OperationContext& ctx, const CIMNamespaceName& ns,
                          const CIMObjectPath& path, const CIMName& methodName,
                          const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        _record(ctx, "invokeMethod", ns, path.toString() + "|" + methodName.getString(),
                std::to_string(in.size()));
        out.append(CIMParamValue("SystemName", CIMValue(String("array1"))));
        return CIMValue(Uint32(0));
    }

private:
    static std::string _flags(std::initializer_list<bool> flags)
    {
        std::string s;
        for (bool f : flags)
        {
            s += f ? '1' : '0';
        }
        return s;
    }

    void _record(const OperationContext& ctx, const char* op, const CIMNamespaceName& ns,
                 const String& target, const std::string& flags)
    {
        Call c;
        c.operation = op;
        c.nameSpace = str(ns.getString());
        c.target = str(target);
        c.flags = flags;
        c.hasIdentity = ctx.contains(IdentityContainer::NAME);
        if (c.hasIdentity)
        {
            c.user = str(IdentityContainer(ctx.get(IdentityContainer::NAME)).getUserName());
        }
        calls.push_back(c);
    }
};

const CIMNamespaceName NS("root/orv");
const CIMObjectPath SERVICE_PATH("ORV_BlockStatisticsService.Name=\"svc\"");

TEST(ObjectsCIMOMHandle, ForwardsEveryRequestWithItsArgumentsAndContext)
{
    RecordingDispatcher d;
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&d);
    OperationContext ctx;
    ctx.insert(IdentityContainer("alice"));
    CIMPropertyList pl;

    handle.getClass(ctx, NS, "CIM_StatisticalData", false, true, false, pl);
    handle.enumerateClassNames(ctx, NS, "CIM_StatisticalData", true);
    CIMInstance inst = handle.getInstance(ctx, NS, SERVICE_PATH, false, true, true, pl);
    Array<CIMInstance> all =
        handle.enumerateInstances(ctx, NS, "ORV_Thing", true, false, false, true, pl);
    handle.associators(ctx, NS, SERVICE_PATH, "A", "R", "Role", "ResultRole", true, false, pl);
    handle.referenceNames(ctx, NS, SERVICE_PATH, "R", "Role");
    Array<CIMParamValue> out;
    CIMValue rv =
        handle.invokeMethod(ctx, NS, SERVICE_PATH, "GetStatisticsCollection", Array<CIMParamValue>(), out);

    ASSERT_EQ(d.calls.size(), 7u);
    const struct
    {
        const char* operation;
        const char* target;
        const char* flags;
    } expected[] = {
        {"getClass", "CIM_StatisticalData", "010"},
        {"enumerateClassNames", "CIM_StatisticalData", "1"},
        {"getInstance", "ORV_BlockStatisticsService.Name=\"svc\"", "011"},
        {"enumerateInstances", "ORV_Thing", "10011"},
        {"associators", "ORV_BlockStatisticsService.Name=\"svc\"|A|R|Role|ResultRole", "10"},
        {"referenceNames", "ORV_BlockStatisticsService.Name=\"svc\"|R|Role", ""},
        {"invokeMethod", "ORV_BlockStatisticsService.Name=\"svc\"|GetStatisticsCollection", "0"},
    };
    for (size_t i = 0; i < d.calls.size(); i++)
    {
        SCOPED_TRACE(expected[i].operation);
        EXPECT_EQ(d.calls[i].operation, expected[i].operation);
        EXPECT_EQ(d.calls[i].nameSpace, "root/orv");
        EXPECT_EQ(d.calls[i].target, expected[i].target);
        EXPECT_EQ(d.calls[i].flags, expected[i].flags);
        EXPECT_EQ(d.calls[i].user, "alice");
    }
    EXPECT_EQ(str(inst.getClassName().getString()), "ORV_BlockStatisticsService");
    EXPECT_EQ(all.size(), 2u);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(str(out[0].getParameterName()), "SystemName");
    Uint32 code = 1;
    rv.get(code);
    EXPECT_EQ(code, 0u);
}

TEST(ObjectsCIMOMHandle, CopiesShareTheBindingAndUnboundHandlesFail)
{
    RecordingDispatcher d;
    CIMOMHandle bound = Sdk::makeCIMOMHandle(&d);
    CIMOMHandle copy;
    copy = bound;
    copy.enumerateInstanceNames(OperationContext(), NS, "ORV_Thing");
    ASSERT_EQ(d.calls.size(), 1u);
    EXPECT_FALSE(d.calls[0].hasIdentity);

    const CIMOMHandle unboundHandles[] = {CIMOMHandle(), Sdk::makeCIMOMHandle(0)};
    for (CIMOMHandle h : unboundHandles)
    {
        try
        {
            h.enumerateInstanceNames(OperationContext(), NS, "ORV_Thing");
            FAIL() << "unbound handle answered";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), CIM_ERR_FAILED);
        }
    }
    try
    {
        bound.createInstance(OperationContext(), NS, CIMInstance("ORV_Thing"));
        FAIL() << "createInstance answered";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
    }
}

class LocalClient : public ::testing::Test
{
protected:
    void TearDown() override
    {
        Sdk::setLocalDispatcher(0);
    }

    RecordingDispatcher _dispatcher;
};

TEST_F(LocalClient, RefusesOperationsUntilConnected)
{
    CIMClient client;
    EXPECT_THROW(client.enumerateInstanceNames(NS, "ORV_Thing"), NotConnectedException);
    EXPECT_THROW(client.connectLocal(), CannotConnectException);
    EXPECT_THROW(client.connect("array.example", 5989, "u", "p"), CannotConnectException);
    EXPECT_TRUE(_dispatcher.calls.empty());
}

TEST_F(LocalClient, ActsAsTheServerWithAnEmptyUser)
{
    Sdk::setLocalDispatcher(&_dispatcher);
    CIMClient client;
    client.connectLocal();
    EXPECT_THROW(client.connectLocal(), AlreadyConnectedException);

    Array<CIMObjectPath> names = client.enumerateInstanceNames(NS, "ORV_StorageSystem");
    client.enumerateInstances(NS, "ORV_Thing");
    client.getInstance(NS, SERVICE_PATH);
    client.associatorNames(NS, SERVICE_PATH);
    Array<CIMParamValue> out;
    client.invokeMethod("root/PG_Internal", SERVICE_PATH, "GetSystemName",
                        Array<CIMParamValue>(), out);
    client.disconnect();
    EXPECT_THROW(client.invokeMethod(NS, SERVICE_PATH, "GetSystemName", Array<CIMParamValue>(),
                                     out),
                 NotConnectedException);

    ASSERT_EQ(_dispatcher.calls.size(), 5u);
    for (const RecordingDispatcher::Call& c : _dispatcher.calls)
    {
        SCOPED_TRACE(c.operation);
        EXPECT_TRUE(c.hasIdentity);
        EXPECT_EQ(c.user, "");
    }
    // The client's documented defaults reach the server unchanged.
    EXPECT_EQ(_dispatcher.calls[1].flags, "11001");
    EXPECT_EQ(_dispatcher.calls[2].flags, "100");
    EXPECT_EQ(_dispatcher.calls[3].target, "ORV_BlockStatisticsService.Name=\"svc\"||||");
    EXPECT_EQ(_dispatcher.calls[4].nameSpace, "root/PG_Internal");
    EXPECT_EQ(names.size(), 1u);
    EXPECT_EQ(out.size(), 1u);
}

// A provider that uses nothing but the standard provider headers.
class SampleProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    explicit SampleProvider(int* terminated) : _terminated(terminated)
    {
    }

    void initialize(CIMOMHandle& cimom) override
    {
        _cimom = cimom;
    }

    void terminate() override
    {
        ++*_terminated;
        delete this;
    }

    void getInstance(const OperationContext& context, const CIMObjectPath& ref, const Boolean,
                     const Boolean, const CIMPropertyList&,
                     InstanceResponseHandler& handler) override
    {
        IdentityContainer id = context.get(IdentityContainer::NAME);
        if (id.getUserName() != "demo")
        {
            throw PEGASUS_CIM_EXCEPTION(CIM_ERR_ACCESS_DENIED,
                                        "Insufficient privilege for the user");
        }
        CIMInstance inst(ref.getClassName());
        inst.addProperty(CIMProperty("Name", CIMValue(String("svc"))));
        inst.setPath(ref);
        handler.processing();
        handler.deliver(inst);
        handler.complete();
    }

    void enumerateInstances(const OperationContext&, const CIMObjectPath& ref, const Boolean,
                            const Boolean, const CIMPropertyList&,
                            InstanceResponseHandler& handler) override
    {
        Array<CIMInstance> all =
            _cimom.enumerateInstances(OperationContext(), ref.getNameSpace(), ref.getClassName(),
                                      true, false, false, false, CIMPropertyList());
        handler.processing();
        handler.deliver(all);
        handler.complete();
    }

    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath&,
                                ObjectPathResponseHandler& handler) override
    {
        handler.processing();
        handler.complete();
    }

    void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        const Boolean, const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("SampleProvider does not support modifyInstance.");
    }

    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("SampleProvider does not support createInstance.");
    }

    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("SampleProvider does not support deleteInstance.");
    }

    void invokeMethod(const OperationContext&, const CIMObjectPath&, const CIMName& methodName,
                      const Array<CIMParamValue>& in,
                      MethodResultResponseHandler& handler) override
    {
        handler.processing();
        handler.deliverParamValue(CIMParamValue("Echo", CIMValue(methodName.getString())));
        handler.deliver(CIMValue(Uint32(in.size())));
        handler.complete();
    }

private:
    CIMOMHandle _cimom;
    int* _terminated;
};

TEST(ObjectsProvider, ServesThroughTheInterfacesAndHandlers)
{
    RecordingDispatcher d;
    int terminated = 0;
    CIMProvider* provider = new SampleProvider(&terminated);
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&d);
    provider->initialize(handle);

    CIMInstanceProvider* ip = dynamic_cast<CIMInstanceProvider*>(provider);
    CIMMethodProvider* mp = dynamic_cast<CIMMethodProvider*>(provider);
    ASSERT_NE(ip, nullptr);
    ASSERT_NE(mp, nullptr);
    // One CIMProvider base however the provider is reached.
    EXPECT_EQ(static_cast<CIMProvider*>(ip), static_cast<CIMProvider*>(mp));

    OperationContext demo;
    demo.insert(IdentityContainer("demo"));
    Sdk::CollectingInstanceResponseHandler one;
    ip->getInstance(demo, SERVICE_PATH, false, false, CIMPropertyList(), one);
    EXPECT_EQ(one.callSequence(), "processing,deliver,complete");
    EXPECT_EQ(one.protocolError(), "");
    ASSERT_EQ(one.getObjects().size(), 1u);
    EXPECT_EQ(str(one.getObjects()[0].getPath().toString()), str(SERVICE_PATH.toString()));

    OperationContext guest;
    guest.insert(IdentityContainer("guest"));
    Sdk::CollectingInstanceResponseHandler refused;
    try
    {
        ip->getInstance(guest, SERVICE_PATH, false, false, CIMPropertyList(), refused);
        FAIL() << "guest was served";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_ACCESS_DENIED);
        EXPECT_EQ(str(e.getMessage()), "Insufficient privilege for the user");
    }
    EXPECT_EQ(refused.callSequence(), "");

    Sdk::CollectingInstanceResponseHandler many;
    ip->enumerateInstances(demo, CIMObjectPath(String(), NS, "ORV_Thing"), false, false,
                           CIMPropertyList(), many);
    EXPECT_EQ(many.callSequence(), "processing,deliver[2],complete");
    EXPECT_EQ(d.calls.back().operation, "enumerateInstances");

    Sdk::CollectingMethodResultResponseHandler result;
    Array<CIMParamValue> in;
    in.append(CIMParamValue("ElementTypes", CIMValue(Array<Uint16>())));
    mp->invokeMethod(demo, SERVICE_PATH, "GetStatisticsCollection", in, result);
    EXPECT_EQ(result.protocolError(), "");
    ASSERT_TRUE(result.hasReturnValue());
    Uint32 rv = 0;
    result.getReturnValue().get(rv);
    EXPECT_EQ(rv, 1u);
    ASSERT_EQ(result.getParamValues().size(), 1u);

    provider->terminate();
    EXPECT_EQ(terminated, 1);
}

TEST(ObjectsHandlers, ProtocolBreachesAreReported)
{
    const struct
    {
        const char* sequence;
        const char* error;
    } cases[] = {
        {"pdc", ""},
        {"pc", ""},
        {"dpc", "deliver() called before processing()"},
        {"pcd", "deliver() called after complete()"},
        {"ppc", "processing() called more than once"},
        {"pdcc", "complete() called more than once"},
        {"pd", "complete() never called"},
        {"", "complete() never called"},
    };
    for (const auto& tc : cases)
    {
        SCOPED_TRACE(tc.sequence);
        Sdk::CollectingObjectPathResponseHandler h;
        for (const char* s = tc.sequence; *s; s++)
        {
            if (*s == 'p')
            {
                h.processing();
            }
            else if (*s == 'd')
            {
                h.deliver(SERVICE_PATH);
            }
            else
            {
                h.complete();
            }
        }
        EXPECT_EQ(h.protocolError(), tc.error);
    }
}

} // namespace
