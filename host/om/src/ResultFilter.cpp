#include "ResultFilter.h"

#include <Pegasus/Sdk/Ownership.h>

#include "Text.h"

PEGASUS_USING_PEGASUS;

namespace cimom
{

namespace
{

bool inPropertyList(const CIMPropertyList& list, const CIMName& name)
{
    for (Uint32 i = 0; i < list.size(); i++)
    {
        if (list[i].equal(name))
        {
            return true;
        }
    }
    return false;
}

} // namespace

CIMInstance filterInstance(const CIMInstance& instance, const InstanceFilter& filter)
{
    // Decided once per shape of instance (its properties' declarations),
    // on the names alone: the instance is copied only when something is to
    // go, and otherwise handed on as the provider made it.
    if (!filter.shape.matches(instance))
    {
        filter.shape.take(instance);
        Sdk::propertyNames(instance, filter.names);
        const Uint32 count = Uint32(filter.names.size());
        if (filter.decisions.size() != count)
        {
            filter.decisions.assign(count, InstanceFilter::Decision());
        }
        bool dropAny = false;
        for (Uint32 i = 0; i < count; i++)
        {
            const CIMName& name = filter.names[i];
            InstanceFilter::Decision& known = filter.decisions[i];
            if (known.name.isNull() || !known.name.equal(name))
            {
                known.name = name;
                known.keep =
                    (!filter.classProperties ||
                     filter.classProperties->count(lower(name.getString())) > 0) &&
                    (filter.propertyList.isNull() || inPropertyList(filter.propertyList, name));
            }
            dropAny = dropAny || !known.keep;
        }
        filter.shapeDrops = dropAny;
        filter.shapeCarries = Sdk::declarationsCarryMoreThan(instance, filter.includeQualifiers,
                                                             filter.includeClassOrigin);
    }
    if (!filter.shapeDrops && !filter.shapeCarries &&
        (filter.includeQualifiers || !Sdk::carriesOwnQualifiers(instance)))
    {
        return instance;
    }
    const Uint32 count = Uint32(filter.decisions.size());
    CIMInstance result = Sdk::exclusiveInstance(instance);
    for (Uint32 i = count; i-- > 0;)
    {
        if (!filter.decisions[i].keep)
        {
            result.removeProperty(i);
        }
    }
    // What is left is narrowed by the request's flags alone.
    result.filter(filter.includeQualifiers, filter.includeClassOrigin, CIMPropertyList());
    return result;
}

bool completePath(CIMObjectPath& path, const String& host, const CIMNamespaceName& nameSpace)
{
    bool changed = false;
    if (path.getHost().size() == 0)
    {
        path.setHost(host);
        changed = true;
    }
    if (path.getNameSpace().isNull())
    {
        path.setNameSpace(nameSpace);
        changed = true;
    }
    return changed;
}

} // namespace cimom
