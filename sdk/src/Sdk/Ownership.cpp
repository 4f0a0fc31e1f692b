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

} // namespace Sdk

PEGASUS_NAMESPACE_END
