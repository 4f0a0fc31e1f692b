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
    CIMInstance result = Sdk::exclusiveInstance(instance);
    const Uint32 count = result.getPropertyCount();
    if (filter.decisions.size() != count)
    {
        filter.decisions.assign(count, InstanceFilter::Decision());
    }
    for (Uint32 i = count; i-- > 0;)
    {
        const CIMConstProperty property = result.getProperty(i);
        const CIMName& name = property.getName();
        InstanceFilter::Decision& known = filter.decisions[i];
        if (known.name.isNull() || !known.name.equal(name))
        {
            known.name = name;
            known.keep =
                (!filter.classProperties ||
                 filter.classProperties->count(lower(name.getString())) > 0) &&
                (filter.propertyList.isNull() || inPropertyList(filter.propertyList, name));
        }
        if (!known.keep)
        {
            result.removeProperty(i);
        }
    }
    // What is left is narrowed by the request's flags alone.
    result.filter(filter.includeQualifiers, filter.includeClassOrigin, CIMPropertyList());
    return result;
}

void completePath(CIMObjectPath& path, const String& host, const CIMNamespaceName& nameSpace)
{
    if (path.getHost().size() == 0)
    {
        path.setHost(host);
    }
    if (path.getNameSpace().isNull())
    {
        path.setNameSpace(nameSpace);
    }
}

} // namespace cimom
