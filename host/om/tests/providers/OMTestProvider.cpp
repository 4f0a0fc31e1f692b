// Test provider module for the object manager, written against the
// OpenPegasus provider API only. It serves the classes of OMTest.mof in
// namespace test/om and records every call it receives (OMTestControl.h).

#include "OMTestControl.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/ProviderException.h>

#include <ORV_ClientAddressContainer.h>

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <thread>

PEGASUS_USING_PEGASUS;

namespace
{

const CIMNamespaceName NS("test/om");

std::mutex eventMutex;
std::vector<std::string> events;

void record(const std::string& event)
{
    std::lock_guard<std::mutex> lock(eventMutex);
    events.push_back(event);
}

std::string str(const String& s)
{
    return std::string((const char*)s.getCString());
}

String keyId(const CIMObjectPath& path)
{
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(CIMName("Id")))
        {
            return keys[i].getValue();
        }
    }
    return String();
}

CIMObjectPath elementPath(const char* className, const char* id)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("Id"), String(id), CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(), CIMName(className), keys);
}

void setValue(CIMInstance& instance, const char* name, const CIMValue& value)
{
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos != PEG_NOT_FOUND)
    {
        instance.getProperty(pos).setValue(value);
    }
}

// Widgets and gadgets: built from the class definitions fetched in
// initialize(), as real providers do.
class WidgetProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    void initialize(CIMOMHandle& cimom) override
    {
        record("initialize:OMT_WidgetProvider");
        // Widen the window in which concurrent first requests race.
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        _cimom = cimom;
        _widgetClass = cimom.getClass(OperationContext(), NS, CIMName("OMT_Widget"), false, true,
                                      true, CIMPropertyList());
        _gadgetClass = cimom.getClass(OperationContext(), NS, CIMName("OMT_Gadget"), false, true,
                                      true, CIMPropertyList());
    }

    void terminate() override
    {
        record("terminate:OMT_WidgetProvider");
        delete this;
    }

    void getInstance(const OperationContext&, const CIMObjectPath& instanceReference, Boolean,
                     Boolean, const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        record("getInstance:OMT_WidgetProvider:" + str(instanceReference.getClassName().getString()));
        Array<CIMInstance> all = _instances(instanceReference.getClassName());
        for (Uint32 i = 0; i < all.size(); i++)
        {
            if (keyId(all[i].getPath()) == keyId(instanceReference))
            {
                handler.processing();
                handler.deliver(all[i]);
                handler.complete();
                return;
            }
        }
        throw CIMObjectNotFoundException("OMT_WidgetProvider: no element " +
                                         keyId(instanceReference));
    }

    void enumerateInstances(const OperationContext&, const CIMObjectPath& classReference, Boolean,
                            Boolean, const CIMPropertyList&,
                            InstanceResponseHandler& handler) override
    {
        record("enumerateInstances:OMT_WidgetProvider:" +
               str(classReference.getClassName().getString()));
        handler.processing();
        handler.deliver(_instances(classReference.getClassName()));
        handler.complete();
    }

    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath& classReference,
                                ObjectPathResponseHandler& handler) override
    {
        record("enumerateInstanceNames:OMT_WidgetProvider:" +
               str(classReference.getClassName().getString()));
        Array<CIMInstance> all = _instances(classReference.getClassName());
        handler.processing();
        for (Uint32 i = 0; i < all.size(); i++)
        {
            handler.deliver(all[i].getPath());
        }
        handler.complete();
    }

    void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        Boolean, const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("OMT_WidgetProvider: read only");
    }

    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("OMT_WidgetProvider: read only");
    }

    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("OMT_WidgetProvider: read only");
    }

    void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
                      const CIMName& methodName, const Array<CIMParamValue>& inParameters,
                      MethodResultResponseHandler& handler) override
    {
        record("invokeMethod:OMT_WidgetProvider:" + str(methodName.getString()));
        handler.processing();
        if (methodName.equal(CIMName("Paint")))
        {
            // Echo name, type and value of each parameter as received.
            String echo;
            for (Uint32 i = 0; i < inParameters.size(); i++)
            {
                CIMValue v = inParameters[i].getValue();
                echo.append(inParameters[i].getParameterName() + "=" +
                            cimTypeToString(v.getType()) + (v.isArray() ? "[]" : "") + ":" +
                            v.toString() + ";");
            }
            handler.deliverParamValue(CIMParamValue("Echo", CIMValue(echo)));
            handler.deliver(CIMValue(Uint32(42)));
        }
        else if (methodName.equal(CIMName("WhoAmI")))
        {
            String user("<none>");
            if (context.contains(IdentityContainer::NAME))
            {
                IdentityContainer identity = context.get(IdentityContainer::NAME);
                user = identity.getUserName();
            }
            handler.deliverParamValue(CIMParamValue("User", CIMValue(user)));
            handler.deliverParamValue(
                CIMParamValue("Address", CIMValue(ORV_getClientAddress(context))));
            handler.deliver(CIMValue(Uint32(0)));
        }
        else if (methodName.equal(CIMName("CallBack")))
        {
            Boolean useContext = false;
            if (inParameters.size() > 0)
            {
                inParameters[0].getValue().get(useContext);
            }
            Array<CIMParamValue> out;
            _cimom.invokeMethod(useContext ? context : OperationContext(), NS, objectReference,
                                CIMName("WhoAmI"), Array<CIMParamValue>(), out);
            handler.deliverParamValue(CIMParamValue("User", out[0].getValue()));
            handler.deliver(CIMValue(Uint32(0)));
        }
        else if (methodName.equal(CIMName("Fail")))
        {
            String kind;
            inParameters[0].getValue().get(kind);
            if (kind == "cim")
            {
                throw CIMException(CIM_ERR_ACCESS_DENIED, "OMT refuses you");
            }
            if (kind == "traceable")
            {
                throw PEGASUS_CIM_EXCEPTION(CIM_ERR_INVALID_PARAMETER, "OMT traceable text");
            }
            if (kind == "pegasus")
            {
                throw InvalidNameException("OMT bad name");
            }
            if (kind == "std")
            {
                throw std::runtime_error("OMT std failure");
            }
            throw 42;
        }
        handler.complete();
    }

private:
    Array<CIMInstance> _instances(const CIMName& className)
    {
        Array<CIMInstance> result;
        if (className.equal(CIMName("OMT_Widget")))
        {
            // W1's path lacks host and namespace, W2's carries its own.
            result.append(_build(_widgetClass, "W1", "red", 10, elementPath("OMT_Widget", "W1")));
            CIMObjectPath w2 = elementPath("OMT_Widget", "W2");
            w2.setHost("otherhost");
            w2.setNameSpace(NS);
            result.append(_build(_widgetClass, "W2", "blue", 20, w2));
        }
        else if (className.equal(CIMName("OMT_Gadget")))
        {
            CIMInstance g = _build(_gadgetClass, "G1", "green", 30, elementPath("OMT_Gadget", "G1"));
            setValue(g, "Extra", CIMValue(String("gizmo")));
            result.append(g);
        }
        return result;
    }

    static CIMInstance _build(CIMClass& cls, const char* id, const char* color, Uint32 size,
                              const CIMObjectPath& path)
    {
        CIMInstance instance = cls.buildInstance(true, true, CIMPropertyList());
        setValue(instance, "Id", CIMValue(String(id)));
        setValue(instance, "BaseProp", CIMValue(String("base of ") + id));
        setValue(instance, "Counter", CIMValue(Uint32(size / 10)));
        setValue(instance, "Color", CIMValue(String(color)));
        setValue(instance, "Size", CIMValue(size));
        instance.setPath(path);
        return instance;
    }

    CIMOMHandle _cimom;
    CIMClass _widgetClass;
    CIMClass _gadgetClass;
};

// An association between two elements, given as pairs of (class, Id).
struct Pair
{
    const char* leftClass;
    const char* leftId;
    const char* rightClass;
    const char* rightId;
};

const Pair LINKS[] = {{"OMT_Widget", "W1", "OMT_Widget", "W2"},
                      {"OMT_Widget", "W1", "OMT_Gadget", "G1"}};
const Pair OWNERSHIPS[] = {{"OMT_Widget", "W2", "OMT_Gadget", "G1"}};

class PairAssociationProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    PairAssociationProvider(const char* name, const char* className, const char* leftRole,
                            const char* rightRole, const Pair* pairs, size_t count)
        : _name(name), _className(className), _leftRole(leftRole), _rightRole(rightRole),
          _pairs(pairs), _count(count)
    {
    }

    void initialize(CIMOMHandle& cimom) override
    {
        record("initialize:" + _name);
        _cimom = cimom;
    }

    void terminate() override
    {
        record("terminate:" + _name);
        delete this;
    }

    void associators(const OperationContext& context, const CIMObjectPath& objectName,
                     const CIMName& associationClass, const CIMName& resultClass,
                     const String& role, const String&, Boolean, Boolean,
                     const CIMPropertyList&, ObjectResponseHandler& handler) override
    {
        record("associators:" + _name + ":" + str(associationClass.getString()) + ":" +
               str(resultClass.getString()));
        handler.processing();
        for (const CIMObjectPath& other : _others(objectName, role))
        {
            // Through the object manager, as the caller: the other end is
            // served by another provider.
            CIMInstance instance = _cimom.getInstance(context, NS, other, false, false, false,
                                                      CIMPropertyList());
            handler.deliver(CIMObject(instance));
        }
        handler.complete();
    }

    void associatorNames(const OperationContext&, const CIMObjectPath& objectName,
                         const CIMName& associationClass, const CIMName& resultClass,
                         const String& role, const String&,
                         ObjectPathResponseHandler& handler) override
    {
        record("associatorNames:" + _name + ":" + str(associationClass.getString()) + ":" +
               str(resultClass.getString()));
        handler.processing();
        for (const CIMObjectPath& other : _others(objectName, role))
        {
            handler.deliver(other);
        }
        handler.complete();
    }

    void references(const OperationContext&, const CIMObjectPath& objectName,
                    const CIMName& resultClass, const String& role, Boolean, Boolean,
                    const CIMPropertyList&, ObjectResponseHandler& handler) override
    {
        record("references:" + _name + ":" + str(resultClass.getString()));
        handler.processing();
        for (size_t i = 0; i < _count; i++)
        {
            if (_involves(_pairs[i], objectName, role))
            {
                handler.deliver(CIMObject(_association(_pairs[i])));
            }
        }
        handler.complete();
    }

    void referenceNames(const OperationContext&, const CIMObjectPath& objectName,
                        const CIMName& resultClass, const String& role,
                        ObjectPathResponseHandler& handler) override
    {
        record("referenceNames:" + _name + ":" + str(resultClass.getString()));
        handler.processing();
        for (size_t i = 0; i < _count; i++)
        {
            if (_involves(_pairs[i], objectName, role))
            {
                handler.deliver(_association(_pairs[i]).getPath());
            }
        }
        handler.complete();
    }

    void getInstance(const OperationContext&, const CIMObjectPath&, Boolean, Boolean,
                     const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException(String(_name.c_str()) + ": getInstance");
    }

    void enumerateInstances(const OperationContext&, const CIMObjectPath& classReference,
                            Boolean, Boolean, const CIMPropertyList&,
                            InstanceResponseHandler& handler) override
    {
        record("enumerateInstances:" + _name + ":" +
               str(classReference.getClassName().getString()));
        handler.processing();
        for (size_t i = 0; i < _count; i++)
        {
            handler.deliver(_association(_pairs[i]));
        }
        handler.complete();
    }

    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath&,
                                ObjectPathResponseHandler& handler) override
    {
        handler.processing();
        for (size_t i = 0; i < _count; i++)
        {
            handler.deliver(_association(_pairs[i]).getPath());
        }
        handler.complete();
    }

    void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        Boolean, const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("read only");
    }

    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("read only");
    }

    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("read only");
    }

private:
    bool _isLeft(const Pair& p, const CIMObjectPath& o) const
    {
        return o.getClassName().equal(CIMName(p.leftClass)) && keyId(o) == p.leftId;
    }

    bool _isRight(const Pair& p, const CIMObjectPath& o) const
    {
        return o.getClassName().equal(CIMName(p.rightClass)) && keyId(o) == p.rightId;
    }

    bool _involves(const Pair& p, const CIMObjectPath& o, const String& role) const
    {
        bool anyRole = role.size() == 0;
        return (_isLeft(p, o) && (anyRole || String::equalNoCase(role, _leftRole.c_str()))) ||
               (_isRight(p, o) && (anyRole || String::equalNoCase(role, _rightRole.c_str())));
    }

    std::vector<CIMObjectPath> _others(const CIMObjectPath& o, const String& role) const
    {
        std::vector<CIMObjectPath> result;
        bool anyRole = role.size() == 0;
        for (size_t i = 0; i < _count; i++)
        {
            const Pair& p = _pairs[i];
            if (_isLeft(p, o) && (anyRole || String::equalNoCase(role, _leftRole.c_str())))
            {
                result.push_back(elementPath(p.rightClass, p.rightId));
            }
            else if (_isRight(p, o) && (anyRole || String::equalNoCase(role, _rightRole.c_str())))
            {
                result.push_back(elementPath(p.leftClass, p.leftId));
            }
        }
        return result;
    }

    CIMInstance _association(const Pair& p) const
    {
        CIMObjectPath left = elementPath(p.leftClass, p.leftId);
        CIMObjectPath right = elementPath(p.rightClass, p.rightId);
        left.setNameSpace(NS);
        right.setNameSpace(NS);
        CIMInstance instance{CIMName(_className.c_str())};
        instance.addProperty(CIMProperty(CIMName(_leftRole.c_str()), CIMValue(left), 0,
                                         CIMName(p.leftClass)));
        instance.addProperty(CIMProperty(CIMName(_rightRole.c_str()), CIMValue(right), 0,
                                         CIMName(p.rightClass)));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName(_leftRole.c_str()), CIMValue(left)));
        keys.append(CIMKeyBinding(CIMName(_rightRole.c_str()), CIMValue(right)));
        instance.setPath(CIMObjectPath(String(), CIMNamespaceName(), CIMName(_className.c_str()),
                                       keys));
        return instance;
    }

    std::string _name;
    std::string _className;
    std::string _leftRole;
    std::string _rightRole;
    const Pair* _pairs;
    size_t _count;
    CIMOMHandle _cimom;
};

// Base of the two small providers below: everything refused.
class RefusingInstanceProvider : public CIMInstanceProvider
{
public:
    void getInstance(const OperationContext&, const CIMObjectPath&, Boolean, Boolean,
                     const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException("getInstance");
    }
    void enumerateInstanceNames(const OperationContext&, const CIMObjectPath&,
                                ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("enumerateInstanceNames");
    }
    void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        Boolean, const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("read only");
    }
    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
                        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("read only");
    }
    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("read only");
    }
};

class InitFailsProvider : public RefusingInstanceProvider
{
public:
    void initialize(CIMOMHandle&) override
    {
        record("initialize:OMT_InitFailsProvider");
        throw CIMException(CIM_ERR_FAILED, "OMT init refused");
    }
    void terminate() override
    {
        record("terminate:OMT_InitFailsProvider");
        delete this;
    }
    void enumerateInstances(const OperationContext&, const CIMObjectPath&, Boolean, Boolean,
                            const CIMPropertyList&, InstanceResponseHandler&) override
    {
        record("enumerateInstances:OMT_InitFailsProvider:must not happen");
    }
};

// Delivers outside processing()/complete(), as careless providers do.
class SloppyProvider : public RefusingInstanceProvider
{
public:
    void initialize(CIMOMHandle&) override
    {
        record("initialize:OMT_SloppyProvider");
    }
    void terminate() override
    {
        record("terminate:OMT_SloppyProvider");
        delete this;
    }
    void enumerateInstances(const OperationContext&, const CIMObjectPath& classReference,
                            Boolean, Boolean, const CIMPropertyList&,
                            InstanceResponseHandler& handler) override
    {
        CIMInstance early(classReference.getClassName());
        early.addProperty(CIMProperty(CIMName("Id"), CIMValue(String("early"))));
        CIMInstance late(classReference.getClassName());
        late.addProperty(CIMProperty(CIMName("Id"), CIMValue(String("late"))));
        handler.deliver(early);
        handler.processing();
        handler.complete();
        handler.deliver(late);
    }
};

} // namespace

extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& providerName)
{
    CIMProvider* provider = nullptr;
    if (String::equalNoCase(providerName, "OMT_WidgetProvider"))
    {
        provider = new WidgetProvider();
    }
    else if (String::equalNoCase(providerName, "OMT_LinkProvider"))
    {
        provider = new PairAssociationProvider("OMT_LinkProvider", "OMT_Link", "Left", "Right",
                                               LINKS, sizeof(LINKS) / sizeof(LINKS[0]));
    }
    else if (String::equalNoCase(providerName, "OMT_OwnershipProvider"))
    {
        provider = new PairAssociationProvider("OMT_OwnershipProvider", "OMT_Ownership",
                                               "Owner", "Part", OWNERSHIPS,
                                               sizeof(OWNERSHIPS) / sizeof(OWNERSHIPS[0]));
    }
    else if (String::equalNoCase(providerName, "OMT_InitFailsProvider"))
    {
        provider = new InitFailsProvider();
    }
    else if (String::equalNoCase(providerName, "OMT_SloppyProvider"))
    {
        provider = new SloppyProvider();
    }
    record("create:" + str(providerName) + (provider ? "" : ":null"));
    return provider;
}

extern "C" PEGASUS_EXPORT void OMTest_reset()
{
    std::lock_guard<std::mutex> lock(eventMutex);
    events.clear();
}

extern "C" PEGASUS_EXPORT void OMTest_events(std::vector<std::string>* out)
{
    std::lock_guard<std::mutex> lock(eventMutex);
    *out = events;
}
