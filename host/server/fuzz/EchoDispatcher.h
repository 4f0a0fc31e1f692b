#ifndef ORV_HOST_FUZZ_ECHODISPATCHER_H
#define ORV_HOST_FUZZ_ECHODISPATCHER_H

// An object manager stand-in that answers every operation with objects built
// from what the caller sent (names, key values, parameter values), so the
// caller's own bytes travel through the response encoder. Used by the
// request fuzzer and the robustness tests.

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include <string>

namespace orvhost
{
namespace fuzzing
{

class EchoDispatcher : public Pegasus::CIMOMDispatcher
{
public:
    int calls = 0;
    std::string lastUser;
    /// Extra text put into every answered string property.
    Pegasus::String extra;

    Pegasus::CIMClass getClass(const Pegasus::OperationContext& c, const Pegasus::CIMNamespaceName&,
                               const Pegasus::CIMName& cn, Pegasus::Boolean, Pegasus::Boolean,
                               Pegasus::Boolean, const Pegasus::CIMPropertyList&) override
    {
        _enter(c);
        Pegasus::CIMClass cls(cn);
        cls.addProperty(Pegasus::CIMProperty(Pegasus::CIMName("Echo"), Pegasus::CIMValue(extra)));
        return cls;
    }
    Pegasus::Array<Pegasus::CIMClass> enumerateClasses(const Pegasus::OperationContext& c,
                                                       const Pegasus::CIMNamespaceName& ns,
                                                       const Pegasus::CIMName& cn, Pegasus::Boolean,
                                                       Pegasus::Boolean, Pegasus::Boolean,
                                                       Pegasus::Boolean) override
    {
        Pegasus::Array<Pegasus::CIMClass> out;
        out.append(getClass(c, ns, cn.isNull() ? Pegasus::CIMName("T_Root") : cn, false, true,
                            true, Pegasus::CIMPropertyList()));
        return out;
    }
    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(const Pegasus::OperationContext& c,
                                                         const Pegasus::CIMNamespaceName&,
                                                         const Pegasus::CIMName& cn,
                                                         Pegasus::Boolean) override
    {
        _enter(c);
        Pegasus::Array<Pegasus::CIMName> out;
        out.append(cn.isNull() ? Pegasus::CIMName("T_Root") : cn);
        return out;
    }
    Pegasus::CIMInstance getInstance(const Pegasus::OperationContext& c,
                                     const Pegasus::CIMNamespaceName&,
                                     const Pegasus::CIMObjectPath& p, Pegasus::Boolean,
                                     Pegasus::Boolean, Pegasus::Boolean,
                                     const Pegasus::CIMPropertyList&) override
    {
        _enter(c);
        return _instance(p);
    }
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::OperationContext& c, const Pegasus::CIMNamespaceName&,
        const Pegasus::CIMName& cn, Pegasus::Boolean, Pegasus::Boolean, Pegasus::Boolean,
        Pegasus::Boolean, const Pegasus::CIMPropertyList&) override
    {
        _enter(c);
        Pegasus::Array<Pegasus::CIMInstance> out;
        out.append(_instance(_path(cn)));
        return out;
    }
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::OperationContext& c, const Pegasus::CIMNamespaceName&,
        const Pegasus::CIMName& cn) override
    {
        _enter(c);
        Pegasus::Array<Pegasus::CIMObjectPath> out;
        out.append(_path(cn));
        return out;
    }
    Pegasus::Array<Pegasus::CIMObject> associators(
        const Pegasus::OperationContext& c, const Pegasus::CIMNamespaceName&,
        const Pegasus::CIMObjectPath& p, const Pegasus::CIMName&, const Pegasus::CIMName&,
        const Pegasus::String& role, const Pegasus::String&, Pegasus::Boolean, Pegasus::Boolean,
        const Pegasus::CIMPropertyList&) override
    {
        _enter(c);
        Pegasus::CIMInstance i = _instance(p);
        i.addProperty(Pegasus::CIMProperty(Pegasus::CIMName("Role"), Pegasus::CIMValue(role)));
        Pegasus::Array<Pegasus::CIMObject> out;
        out.append(Pegasus::CIMObject(i));
        return out;
    }
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::OperationContext& c, const Pegasus::CIMNamespaceName&,
        const Pegasus::CIMObjectPath& p, const Pegasus::CIMName&, const Pegasus::CIMName&,
        const Pegasus::String&, const Pegasus::String&) override
    {
        _enter(c);
        Pegasus::Array<Pegasus::CIMObjectPath> out;
        out.append(p);
        return out;
    }
    Pegasus::Array<Pegasus::CIMObject> references(const Pegasus::OperationContext& c,
                                                  const Pegasus::CIMNamespaceName& ns,
                                                  const Pegasus::CIMObjectPath& p,
                                                  const Pegasus::CIMName& rc,
                                                  const Pegasus::String& role, Pegasus::Boolean iq,
                                                  Pegasus::Boolean ico,
                                                  const Pegasus::CIMPropertyList& pl) override
    {
        return associators(c, ns, p, rc, rc, role, role, iq, ico, pl);
    }
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(const Pegasus::OperationContext& c,
                                                          const Pegasus::CIMNamespaceName& ns,
                                                          const Pegasus::CIMObjectPath& p,
                                                          const Pegasus::CIMName& rc,
                                                          const Pegasus::String& role) override
    {
        return associatorNames(c, ns, p, rc, rc, role, role);
    }
    Pegasus::CIMValue invokeMethod(const Pegasus::OperationContext& c,
                                   const Pegasus::CIMNamespaceName&,
                                   const Pegasus::CIMObjectPath& p, const Pegasus::CIMName& m,
                                   const Pegasus::Array<Pegasus::CIMParamValue>& in,
                                   Pegasus::Array<Pegasus::CIMParamValue>& out) override
    {
        _enter(c);
        for (Pegasus::Uint32 i = 0; i < in.size(); ++i)
        {
            out.append(in[i]);
        }
        out.append(Pegasus::CIMParamValue("Path", Pegasus::CIMValue(p)));
        return Pegasus::CIMValue(m.getString() + extra);
    }

private:
    void _enter(const Pegasus::OperationContext& c)
    {
        ++calls;
        lastUser = static_cast<const char*>(
            Pegasus::IdentityContainer(c.get(Pegasus::IdentityContainer::NAME))
                .getUserName()
                .getCString());
    }
    Pegasus::CIMObjectPath _path(const Pegasus::CIMName& cn) const
    {
        Pegasus::Array<Pegasus::CIMKeyBinding> keys;
        keys.append(Pegasus::CIMKeyBinding(Pegasus::CIMName("Id"), extra,
                                           Pegasus::CIMKeyBinding::STRING));
        return Pegasus::CIMObjectPath(Pegasus::String(), Pegasus::CIMNamespaceName(), cn, keys);
    }
    Pegasus::CIMInstance _instance(const Pegasus::CIMObjectPath& p) const
    {
        Pegasus::CIMInstance i(p.getClassName());
        const Pegasus::Array<Pegasus::CIMKeyBinding>& keys = p.getKeyBindings();
        for (Pegasus::Uint32 k = 0; k < keys.size(); ++k)
        {
            i.addProperty(Pegasus::CIMProperty(keys[k].getName(),
                                               Pegasus::CIMValue(keys[k].getValue() + extra)));
        }
        i.addProperty(Pegasus::CIMProperty(Pegasus::CIMName("Path"),
                                           Pegasus::CIMValue(p.toString() + extra)));
        i.setPath(p);
        return i;
    }
};

} // namespace fuzzing
} // namespace orvhost

#endif
