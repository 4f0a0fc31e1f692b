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

bool carriesMoreThan(const CIMConstInstance& instance, Boolean includeQualifiers,
                     Boolean includeClassOrigin)
{
    const CIMObjectRep& rep = needRep(SdkRepAccess::rep(instance));
    if (!includeQualifiers && rep.qualifiers.count() != 0)
    {
        return true;
    }
    for (const CIMProperty& p : rep.properties.view())
    {
        if (SdkRepAccess::rep(p)->carries(!includeQualifiers, !includeClassOrigin))
        {
            return true;
        }
    }
    return false;
}

} // namespace Sdk

PEGASUS_NAMESPACE_END
