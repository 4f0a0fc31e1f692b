#ifndef Pegasus_Sdk_Ownership_h
#define Pegasus_Sdk_Ownership_h

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Linkage.h>

#include <memory>
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

// The declarations an instance's properties read from, in order. The
// instances a provider builds from one class mostly share them, and with
// them their names, qualifiers and class origins, so what depends only on
// those can be decided once per shape rather than once per instance. Held
// declarations stay as they are: a shared one is never changed in place.
class PEGASUS_COMMON_LINKAGE PropertyShape
{
public:
    PropertyShape();
    ~PropertyShape();
    PropertyShape(const PropertyShape&) = delete;
    PropertyShape& operator=(const PropertyShape&) = delete;

    // True when the instance's properties read from exactly these
    // declarations, in this order.
    bool matches(const CIMConstInstance& instance) const;
    // From now on, the instance's.
    void take(const CIMConstInstance& instance);
    void clear();

private:
    std::vector<std::shared_ptr<const void>> _declarations;
};

// Whether filter(includeQualifiers, includeClassOrigin, ...) would drop
// something other than properties (qualifiers or class origins) is, in two
// parts: what the declarations carry, decided once per shape ...
PEGASUS_COMMON_LINKAGE bool declarationsCarryMoreThan(const CIMConstInstance& instance,
                                                      Boolean includeQualifiers,
                                                      Boolean includeClassOrigin);

// ... and, without includeQualifiers, the instance's own qualifiers or a
// property's own list.
PEGASUS_COMMON_LINKAGE bool carriesOwnQualifiers(const CIMConstInstance& instance);

} // namespace Sdk

PEGASUS_NAMESPACE_END

#endif
