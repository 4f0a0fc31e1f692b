#include <Pegasus/Sdk/Ownership.h>

#include "../Common/SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

namespace Sdk
{

CIMInstance exclusiveInstance(const CIMInstance& instance)
{
    const std::shared_ptr<CIMObjectRep>& rep = SdkRepAccess::rep(instance);
    // Qualifier lists need no check: they are only ever dropped whole, which
    // leaves the qualifiers themselves untouched.
    if (rep && rep.use_count() == 1 && rep->properties.soleOwner())
    {
        return instance;
    }
    return instance.clone();
}

void propertyNames(const CIMConstInstance& instance, std::vector<CIMName>& names)
{
    const auto properties = needRep(SdkRepAccess::rep(instance)).properties.view();
    names.clear();
    for (const CIMProperty& p : properties)
    {
        names.push_back(p.getName());
    }
}

PropertyShape::PropertyShape() = default;
PropertyShape::~PropertyShape() = default;

bool PropertyShape::matches(const CIMConstInstance& instance) const
{
    const auto properties = needRep(SdkRepAccess::rep(instance)).properties.view();
    if (properties.size() != _declarations.size())
    {
        return false;
    }
    for (size_t i = 0; i < properties.size(); i++)
    {
        if (SdkRepAccess::rep(properties[i])->decl.get() != _declarations[i].get())
        {
            return false;
        }
    }
    return true;
}

void PropertyShape::take(const CIMConstInstance& instance)
{
    const auto properties = needRep(SdkRepAccess::rep(instance)).properties.view();
    _declarations.clear();
    for (const CIMProperty& p : properties)
    {
        // Held through the counted reference the deleter keeps.
        const Ref<const CIMPropertyDecl>& decl = SdkRepAccess::rep(p)->decl;
        _declarations.emplace_back(decl.get(), [held = decl](const void*) {});
    }
}

void PropertyShape::clear()
{
    _declarations.clear();
}

bool declarationsCarryMoreThan(const CIMConstInstance& instance, Boolean includeQualifiers,
                               Boolean includeClassOrigin)
{
    for (const CIMProperty& p : needRep(SdkRepAccess::rep(instance)).properties.view())
    {
        const CIMPropertyDecl& decl = *SdkRepAccess::rep(p)->decl;
        if ((!includeQualifiers && decl.qualifiers.count() != 0) ||
            (!includeClassOrigin && !decl.classOrigin.isNull()))
        {
            return true;
        }
    }
    return false;
}

bool carriesOwnQualifiers(const CIMConstInstance& instance)
{
    const CIMObjectRep& rep = needRep(SdkRepAccess::rep(instance));
    if (rep.qualifiers.count() != 0)
    {
        return true;
    }
    for (const CIMProperty& p : rep.properties.view())
    {
        if (SdkRepAccess::rep(p)->hasOwnQualifiers())
        {
            return true;
        }
    }
    return false;
}

} // namespace Sdk

PEGASUS_NAMESPACE_END
