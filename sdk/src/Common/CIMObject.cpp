#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>

#include "SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

std::shared_ptr<CIMObjectRep> CIMObjectRep::deepCopy() const
{
    auto copy = std::make_shared<CIMObjectRep>();
    copy->kind = kind;
    copy->className = className;
    copy->superClassName = superClassName;
    copy->path = path;
    copy->qualifiers = qualifiers.deepCopy();
    copy->properties = properties.deepCopy();
    copy->methods = methods.deepCopy();
    return copy;
}

bool CIMObjectRep::identical(const CIMObjectRep& other) const
{
    return kind == other.kind && className.equal(other.className) &&
           superClassName.equal(other.superClassName) &&
           qualifiers.identical<CIMConstQualifier>(other.qualifiers) &&
           properties.identical<CIMConstProperty>(other.properties) &&
           methods.identical<CIMConstMethod>(other.methods);
}

namespace
{
String qualifierText(const NamedList<CIMQualifier>& qualifiers, const char* indent)
{
    if (qualifiers.count() == 0)
    {
        return String();
    }
    String text(indent);
    text.append("[");
    const auto items = qualifiers.view();
    for (Uint32 i = 0; i < items.size(); i++)
    {
        const CIMQualifier& q = items[i];
        if (i)
        {
            text.append(", ");
        }
        text.append(q.getName().getString());
        if (!q.getValue().isNull())
        {
            text.append("(");
            text.append(q.getValue().toString());
            text.append(")");
        }
    }
    text.append("]\n");
    return text;
}
} // namespace

// A MOF-like rendering, meant for diagnostics rather than for a MOF compiler.
String CIMObjectRep::toMof() const
{
    String text = qualifierText(qualifiers, "");
    if (kind == CLASS)
    {
        text.append("class ");
        text.append(className.getString());
        if (!superClassName.isNull())
        {
            text.append(" : ");
            text.append(superClassName.getString());
        }
    }
    else
    {
        text.append("instance of ");
        text.append(className.getString());
    }
    text.append("\n{\n");
    const auto items = properties.view();
    for (size_t i = 0; i < items.size(); i++)
    {
        const CIMProperty p = items.item(i);
        text.append(qualifierText(SdkRepAccess::rep(p)->qualifiers(), "    "));
        text.append("    ");
        if (kind == CLASS)
        {
            text.append(cimTypeToString(p.getType()));
            text.append(" ");
        }
        text.append(p.getName().getString());
        if (p.isArray())
        {
            text.append("[]");
        }
        if (!p.getValue().isNull())
        {
            text.append(" = ");
            text.append(p.getValue().toString());
        }
        text.append(";\n");
    }
    for (const CIMMethod& m : methods.view())
    {
        text.append("    ");
        text.append(cimTypeToString(m.getType()));
        text.append(" ");
        text.append(m.getName().getString());
        text.append("(");
        for (Uint32 i = 0; i < m.getParameterCount(); i++)
        {
            CIMConstParameter param = static_cast<const CIMMethod&>(m).getParameter(i);
            if (i)
            {
                text.append(", ");
            }
            text.append(cimTypeToString(param.getType()));
            text.append(" ");
            text.append(param.getName().getString());
            if (param.isArray())
            {
                text.append("[]");
            }
        }
        text.append(");\n");
    }
    text.append("};\n");
    return text;
}

CIMObject::CIMObject()
{
}

CIMObject::CIMObject(const CIMObject& x) : _rep(x._rep)
{
}

CIMObject::CIMObject(const CIMClass& x) : _rep(x._rep)
{
}

CIMObject::CIMObject(const CIMInstance& x) : _rep(x._rep)
{
}

CIMObject::~CIMObject()
{
}

CIMObject& CIMObject::operator=(const CIMObject& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMObject::getClassName() const
{
    return needRep(_rep).className;
}

const CIMObjectPath& CIMObject::getPath() const
{
    return needRep(_rep).path;
}

void CIMObject::setPath(const CIMObjectPath& path)
{
    needRep(_rep).path = path;
}

CIMObject& CIMObject::addQualifier(const CIMQualifier& qualifier)
{
    needRep(_rep).qualifiers.add(qualifier, "qualifier");
    return *this;
}

Uint32 CIMObject::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMObject::getQualifier(Uint32 index)
{
    return needRep(_rep).qualifiers.get(index);
}

CIMConstQualifier CIMObject::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

void CIMObject::removeQualifier(Uint32 index)
{
    needRep(_rep).qualifiers.remove(index);
}

Uint32 CIMObject::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

CIMObject& CIMObject::addProperty(const CIMProperty& x)
{
    needRep(_rep).properties.add(x, "property");
    return *this;
}

Uint32 CIMObject::findProperty(const CIMName& name) const
{
    return needRep(_rep).properties.find(name);
}

CIMProperty CIMObject::getProperty(Uint32 index)
{
    return needRep(_rep).properties.get(index);
}

CIMConstProperty CIMObject::getProperty(Uint32 index) const
{
    return std::as_const(needRep(_rep).properties).get(index);
}

void CIMObject::removeProperty(Uint32 index)
{
    needRep(_rep).properties.remove(index);
}

Uint32 CIMObject::getPropertyCount() const
{
    return needRep(_rep).properties.count();
}

CIMObject CIMObject::clone() const
{
    return SdkRepAccess::wrap<CIMObject>(needRep(_rep).deepCopy());
}

Boolean CIMObject::identical(const CIMConstObject& x) const
{
    return needRep(_rep).identical(needRep(x._rep));
}

Boolean CIMObject::isUninitialized() const
{
    return !_rep;
}

String CIMObject::toString() const
{
    return needRep(_rep).toMof();
}

Boolean CIMObject::isClass() const
{
    return needRep(_rep).kind == CIMObjectRep::CLASS;
}

Boolean CIMObject::isInstance() const
{
    return needRep(_rep).kind == CIMObjectRep::INSTANCE;
}

CIMConstObject::CIMConstObject()
{
}

CIMConstObject::CIMConstObject(const CIMConstObject& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMObject& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMClass& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMInstance& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMConstClass& x) : _rep(x._rep)
{
}

CIMConstObject::CIMConstObject(const CIMConstInstance& x) : _rep(x._rep)
{
}

CIMConstObject::~CIMConstObject()
{
}

CIMConstObject& CIMConstObject::operator=(const CIMConstObject& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstObject::getClassName() const
{
    return needRep(_rep).className;
}

const CIMObjectPath& CIMConstObject::getPath() const
{
    return needRep(_rep).path;
}

Uint32 CIMConstObject::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstObject::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

Uint32 CIMConstObject::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

Uint32 CIMConstObject::findProperty(const CIMName& name) const
{
    return needRep(_rep).properties.find(name);
}

CIMConstProperty CIMConstObject::getProperty(Uint32 index) const
{
    return std::as_const(needRep(_rep).properties).get(index);
}

Uint32 CIMConstObject::getPropertyCount() const
{
    return needRep(_rep).properties.count();
}

CIMObject CIMConstObject::clone() const
{
    return SdkRepAccess::wrap<CIMObject>(needRep(_rep).deepCopy());
}

Boolean CIMConstObject::identical(const CIMConstObject& x) const
{
    return needRep(_rep).identical(needRep(x._rep));
}

Boolean CIMConstObject::isUninitialized() const
{
    return !_rep;
}

String CIMConstObject::toString() const
{
    return needRep(_rep).toMof();
}

Boolean CIMConstObject::isClass() const
{
    return needRep(_rep).kind == CIMObjectRep::CLASS;
}

Boolean CIMConstObject::isInstance() const
{
    return needRep(_rep).kind == CIMObjectRep::INSTANCE;
}

PEGASUS_NAMESPACE_END
