#ifndef Pegasus_Sdk_Ownership_h
#define Pegasus_Sdk_Ownership_h

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Linkage.h>

#include <vector>

PEGASUS_NAMESPACE_BEGIN

namespace Sdk
{

// For hosts that post-process what providers deliver. An instance that the
// caller may change (properties removed, qualifiers and class origins
// dropped, path set) without the change reaching any handle but `instance`:
// the same object when nothing else refers to it or to one of its
// properties, else a clone. Meant for a handle the caller is about to drop.
PEGASUS_COMMON_LINKAGE CIMInstance exclusiveInstance(const CIMInstance& instance);

// The names of an instance's properties in order, read without handing the
// properties out (which would give the instance copies of its own).
PEGASUS_COMMON_LINKAGE void propertyNames(const CIMConstInstance& instance,
                                          std::vector<CIMName>& names);

// True when filter(includeQualifiers, includeClassOrigin, ...) would drop
// something other than properties: qualifiers or class origins.
PEGASUS_COMMON_LINKAGE bool carriesMoreThan(const CIMConstInstance& instance,
                                            Boolean includeQualifiers,
                                            Boolean includeClassOrigin);

} // namespace Sdk

PEGASUS_NAMESPACE_END

#endif
