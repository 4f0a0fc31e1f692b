// Qualifier flavors and scopes, method declarations, read-only views, instance
// filtering, error pass-through and concurrent delivery.

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
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

TEST(ObjectsFlavor, CombinesAndTestsBits)
{
    EXPECT_TRUE(CIMFlavor::DEFAULTS.hasFlavor(CIMFlavor::OVERRIDABLE));
    EXPECT_TRUE(CIMFlavor::DEFAULTS.hasFlavor(CIMFlavor::TOSUBCLASS));
    EXPECT_FALSE(CIMFlavor::DEFAULTS.hasFlavor(CIMFlavor::TOINSTANCE));
    EXPECT_FALSE(CIMFlavor::DEFAULTS.hasFlavor(CIMFlavor::OVERRIDABLE + CIMFlavor::TOINSTANCE));
    EXPECT_TRUE(CIMFlavor::ENABLEOVERRIDE.equal(CIMFlavor::OVERRIDABLE));

    CIMFlavor f;
    f.addFlavor(CIMFlavor::DISABLEOVERRIDE);
    f.addFlavor(CIMFlavor::TOSUBCLASS);
    f.addFlavor(CIMFlavor::TOSUBCLASS);
    EXPECT_EQ(str(f.toString()), "TOSUBCLASS DISABLEOVERRIDE");
    f.removeFlavor(CIMFlavor::DISABLEOVERRIDE);
    EXPECT_TRUE(f.equal(CIMFlavor::TOSUBCLASS));
    EXPECT_EQ(str(CIMFlavor().toString()), "");

    CIMQualifier q(CIMName("Key"), CIMValue(Boolean(true)), CIMFlavor::TOSUBCLASS);
    q.setFlavor(CIMFlavor::TRANSLATABLE);
    EXPECT_TRUE(q.getFlavor().hasFlavor(CIMFlavor::TOSUBCLASS + CIMFlavor::TRANSLATABLE));
    q.unsetFlavor(CIMFlavor::TOSUBCLASS);
    EXPECT_TRUE(q.getFlavor().equal(CIMFlavor::TRANSLATABLE));
}

TEST(ObjectsScope, AnyCoversEveryScope)
{
    const CIMScope each[] = {CIMScope::CLASS,     CIMScope::ASSOCIATION, CIMScope::INDICATION,
                             CIMScope::PROPERTY,  CIMScope::REFERENCE,   CIMScope::METHOD,
                             CIMScope::PARAMETER};
    CIMScope all;
    for (const CIMScope& s : each)
    {
        EXPECT_TRUE(CIMScope::ANY.hasScope(s));
        EXPECT_FALSE(CIMScope::NONE.hasScope(s));
        all.addScope(s);
    }
    EXPECT_TRUE(all.equal(CIMScope::ANY));
    EXPECT_EQ(str(CIMScope::ANY.toString()), "ANY");
    EXPECT_EQ(str((CIMScope::PROPERTY + CIMScope::CLASS).toString()), "CLASS PROPERTY");

    CIMQualifierDecl decl(CIMName("Key"), CIMValue(Boolean(false)),
                          CIMScope::PROPERTY + CIMScope::REFERENCE);
    EXPECT_TRUE(decl.getFlavor().equal(CIMFlavor::DEFAULTS));
    EXPECT_TRUE(decl.getScope().hasScope(CIMScope::REFERENCE));
    EXPECT_FALSE(decl.getScope().hasScope(CIMScope::METHOD));
    CIMQualifierDecl copy = decl.clone();
    copy.setValue(CIMValue(Boolean(true)));
    EXPECT_FALSE(copy.identical(decl));
}

TEST(ObjectsMethod, ParametersAndIdentity)
{
    EXPECT_THROW(CIMParameter(CIMName("P"), CIMTYPE_STRING, false, 0, CIMName("CIM_X")),
                 TypeMismatchException);
    EXPECT_THROW(CIMMethod(CIMName(), CIMTYPE_UINT32), UninitializedObjectException);

    CIMMethod m(CIMName("GetStatisticsCollection"), CIMTYPE_UINT32, CIMName("CIM_Service"));
    CIMParameter types(CIMName("ElementTypes"), CIMTYPE_UINT16, true);
    types.addQualifier(CIMQualifier(CIMName("In"), CIMValue(Boolean(true))));
    m.addParameter(types);
    m.addParameter(CIMParameter(CIMName("Job"), CIMTYPE_REFERENCE, false, 0,
                                CIMName("CIM_ConcreteJob")));

    CIMMethod copy = m.clone();
    EXPECT_TRUE(copy.identical(m));
    copy.getParameter(0).getQualifier(0).setValue(CIMValue(Boolean(false)));
    EXPECT_FALSE(copy.identical(m));
    Boolean in = false;
    m.getParameter(0).getQualifier(0).getValue().get(in);
    EXPECT_TRUE(in);

    CIMConstMethod view(m);
    EXPECT_EQ(view.getParameterCount(), 2u);
    EXPECT_EQ(str(view.getParameter(1).getReferenceClassName().getString()), "CIM_ConcreteJob");
    EXPECT_TRUE(view.getParameter(0).isArray());
    m.removeParameter(1);
    EXPECT_EQ(view.getParameterCount(), 1u);
}

TEST(ObjectsViews, ConstViewsShareAndTheirClonesDoNot)
{
    CIMInstance inst(CIMName("Test_Element"));
    inst.addProperty(CIMProperty(CIMName("Count"), CIMValue(Uint32(1))));
    CIMConstInstance view(inst);
    CIMConstObject objectView(inst);

    inst.getProperty(0).setValue(CIMValue(Uint32(2)));
    inst.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("n"))));
    Uint32 v = 0;
    view.getProperty(0).getValue().get(v);
    EXPECT_EQ(v, 2u);
    EXPECT_EQ(objectView.getPropertyCount(), 2u);
    EXPECT_TRUE(objectView.isInstance());

    CIMInstance copy = view.clone();
    copy.removeProperty(0);
    EXPECT_EQ(inst.getPropertyCount(), 2u);
    EXPECT_THROW(CIMConstClass c(objectView), DynamicCastFailedException);
}

struct FilterCase
{
    const char* description;
    bool includeQualifiers;
    bool includeClassOrigin;
    bool nullList;
    std::vector<const char*> list;
    std::vector<std::string> expected;
};

TEST(ObjectsFilter, FiltersAnExistingInstance)
{
    const FilterCase cases[] = {
        {"nothing removed", true, true, true, {}, {"A", "B", "C"}},
        {"empty list", true, true, false, {}, {}},
        {"listed only, case ignored", false, false, false, {"c", "a"}, {"A", "C"}},
    };
    for (const FilterCase& tc : cases)
    {
        SCOPED_TRACE(tc.description);
        CIMInstance inst(CIMName("Test_Element"));
        inst.addQualifier(CIMQualifier(CIMName("Description"), CIMValue(String("d"))));
        for (const char* n : {"A", "B", "C"})
        {
            CIMProperty p(CIMName(n), CIMValue(String(n)), 0, CIMName(), CIMName("Test_Base"));
            p.addQualifier(CIMQualifier(CIMName("MaxLen"), CIMValue(Uint32(8))));
            inst.addProperty(p);
        }
        Array<CIMName> names;
        for (const char* n : tc.list)
        {
            names.append(CIMName(n));
        }
        inst.instanceFilter(tc.includeQualifiers, tc.includeClassOrigin,
                            tc.nullList ? CIMPropertyList() : CIMPropertyList(names));

        std::vector<std::string> kept;
        for (Uint32 i = 0; i < inst.getPropertyCount(); i++)
        {
            CIMConstProperty p = static_cast<const CIMInstance&>(inst).getProperty(i);
            kept.push_back(str(p.getName().getString()));
            EXPECT_EQ(p.getQualifierCount(), tc.includeQualifiers ? 1u : 0u);
            EXPECT_EQ(p.getClassOrigin().isNull(), !tc.includeClassOrigin);
        }
        EXPECT_EQ(kept, tc.expected);
        EXPECT_EQ(inst.getQualifierCount(), tc.includeQualifiers ? 1u : 0u);
    }
}

// Fails every request the way a server would, so callers see the server's error.
class FailingDispatcher : public CIMOMDispatcher
{
public:
    CIMClass getClass(const OperationContext&, const CIMNamespaceName&, const CIMName&, Boolean,
                      Boolean, Boolean, const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_INVALID_CLASS, "no such class");
    }
    Array<CIMClass> enumerateClasses(const OperationContext&, const CIMNamespaceName&,
                                     const CIMName&, Boolean, Boolean, Boolean, Boolean) override
    {
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, "no such namespace");
    }
    Array<CIMName> enumerateClassNames(const OperationContext&, const CIMNamespaceName&,
                                       const CIMName&, Boolean) override
    {
        throw CIMException(CIM_ERR_INVALID_NAMESPACE, "no such namespace");
    }
    CIMInstance getInstance(const OperationContext&, const CIMNamespaceName&,
                            const CIMObjectPath&, Boolean, Boolean, Boolean,
                            const CIMPropertyList&) override
    {
        throw CIMObjectNotFoundException("ProviderX CIM Object not found.QZ_KYRO:1");
    }
    Array<CIMInstance> enumerateInstances(const OperationContext&, const CIMNamespaceName&,
                                          const CIMName&, Boolean, Boolean, Boolean, Boolean,
                                          const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_FAILED, "provider failed");
    }
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext&, const CIMNamespaceName&,
                                                const CIMName&) override
    {
        throw CIMException(CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user");
    }
    Array<CIMObject> associators(const OperationContext&, const CIMNamespaceName&,
                                 const CIMObjectPath&, const CIMName&, const CIMName&,
                                 const String&, const String&, Boolean, Boolean,
                                 const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_FAILED, "associators failed");
    }
    Array<CIMObjectPath> associatorNames(const OperationContext&, const CIMNamespaceName&,
                                         const CIMObjectPath&, const CIMName&, const CIMName&,
                                         const String&, const String&) override
    {
        throw CIMException(CIM_ERR_FAILED, "associatorNames failed");
    }
    Array<CIMObject> references(const OperationContext&, const CIMNamespaceName&,
                                const CIMObjectPath&, const CIMName&, const String&, Boolean,
                                Boolean, const CIMPropertyList&) override
    {
        throw CIMException(CIM_ERR_FAILED, "references failed");
    }
    Array<CIMObjectPath> referenceNames(const OperationContext&, const CIMNamespaceName&,
                                        const CIMObjectPath&, const CIMName&,
                                        const String&) override
    {
        throw CIMException(CIM_ERR_FAILED, "referenceNames failed");
    }
    CIMValue invokeMethod(const OperationContext&, const CIMNamespaceName&, const CIMObjectPath&,
                          const CIMName&, const Array<CIMParamValue>&,
                          Array<CIMParamValue>&) override
    {
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND, "no such method");
    }
};

TEST(ObjectsErrors, ServerErrorsReachTheCallerUnchanged)
{
    FailingDispatcher failing;
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&failing);
    const CIMNamespaceName ns("root/orv");
    try
    {
        handle.getInstance(OperationContext(), ns, CIMObjectPath("X.InstanceID=\"1\""), false,
                           false, false, CIMPropertyList());
        FAIL() << "no exception";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_NOT_FOUND);
        EXPECT_EQ(str(e.getMessage()), "ProviderX CIM Object not found.QZ_KYRO:1");
    }

    Sdk::setLocalDispatcher(&failing);
    CIMClient client;
    client.connectLocal();
    Array<CIMParamValue> out;
    try
    {
        client.invokeMethod("root/PG_Internal", CIMObjectPath("ORV_InternalCache"),
                            "GetSystemName", Array<CIMParamValue>(), out);
        FAIL() << "no exception";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_METHOD_NOT_FOUND);
        EXPECT_EQ(str(e.getMessage()), "no such method");
    }
    EXPECT_EQ(out.size(), 0u);
    // The connection survives a failed request.
    EXPECT_THROW(client.enumerateInstanceNames(ns, "ORV_StorageSystem"), CIMException);
    Sdk::setLocalDispatcher(0);
    // An open connection keeps its dispatcher; a new one cannot be made.
    EXPECT_THROW(client.getClass(ns, "ORV_Thing"), CIMException);
    CIMClient other;
    EXPECT_THROW(other.connectLocal(), CannotConnectException);
}

TEST(ObjectsHandlers, ConcurrentDeliveriesAreAllKept)
{
    const int threads = 4;
    const int perThread = 500;
    Sdk::CollectingInstanceResponseHandler h;
    h.processing();
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; t++)
    {
        workers.emplace_back([&h, t]() {
            for (int i = 0; i < perThread; i++)
            {
                if (i % 2)
                {
                    h.deliver(CIMInstance(CIMName("Test_Element")));
                }
                else
                {
                    Array<CIMInstance> two;
                    two.append(CIMInstance(CIMName("Test_Element")));
                    two.append(CIMInstance(CIMName(t % 2 ? "Test_A" : "Test_B")));
                    h.deliver(two);
                }
            }
        });
    }
    for (std::thread& w : workers)
    {
        w.join();
    }
    h.complete();
    EXPECT_EQ(h.protocolError(), "");
    EXPECT_EQ(h.deliverCallCount(), Uint32(threads * perThread));
    EXPECT_EQ(h.getObjects().size(), Uint32(threads * perThread / 2 * 3));
}

} // namespace
