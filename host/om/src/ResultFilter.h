#ifndef CIMOM_RESULTFILTER_H
#define CIMOM_RESULTFILTER_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Sdk/Ownership.h>

#include <set>
#include <string>
#include <vector>

namespace cimom
{

/** Property names as lower-case keys. */
typedef std::set<std::string> NameSet;

/**
    What a request lets through of each instance. classProperties, when
    set, limits properties to those names (deepInheritance / localOnly);
    the property list, when not null, limits them further; without
    includeQualifiers the instance and its properties lose their
    qualifiers, without includeClassOrigin the properties lose their class
    origin.
*/
struct InstanceFilter
{
    const NameSet* classProperties = nullptr;
    Pegasus::CIMPropertyList propertyList;
    bool includeQualifiers = false;
    bool includeClassOrigin = false;

    /** Decisions by position, reused while instances come with the same
        property names (an enumeration's instances all do); forgotten
        (forgetDecisions) by whoever changes the rules above. */
    struct Decision
    {
        Pegasus::CIMName name;
        bool keep = false;
    };
    mutable std::vector<Decision> decisions;
    mutable std::vector<Pegasus::CIMName> names; // room reused per instance

    /** The declarations the decisions were made for, and what followed
        from them alone; cleared with the decisions. */
    mutable Pegasus::Sdk::PropertyShape shape;
    mutable bool shapeDrops = false;
    mutable bool shapeCarries = false;

    void forgetDecisions()
    {
        decisions.clear();
        shape.clear();
    }
};

/**
    The instance as the request lets it through. The provider's object is
    left alone: it is copied when something is to go, unless `instance`,
    which the caller then drops, is the only handle left on it; when nothing
    is, the result is `instance` itself, to be copied before any change.
*/
Pegasus::CIMInstance filterInstance(const Pegasus::CIMInstance& instance,
                                    const InstanceFilter& filter);

/** Fills in the host and namespace where they are empty; true if it did. */
bool completePath(Pegasus::CIMObjectPath& path, const Pegasus::String& host,
                  const Pegasus::CIMNamespaceName& nameSpace);

} // namespace cimom

#endif
