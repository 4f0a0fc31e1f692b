#include "ResultFilter.h"

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

void removeQualifiers(CIMProperty& property)
{
    while (property.getQualifierCount() > 0)
    {
        property.removeQualifier(property.getQualifierCount() - 1);
    }
}

} // namespace

CIMInstance filterInstance(const CIMInstance& instance, const InstanceFilter& filter)
{
    CIMInstance result = instance.clone();
    for (Uint32 i = result.getPropertyCount(); i-- > 0;)
    {
        CIMProperty property = result.getProperty(i);
        const CIMName name = property.getName();
        bool keep = (!filter.classProperties ||
                     filter.classProperties->count(lower(name.getString())) > 0) &&
                    (filter.propertyList.isNull() || inPropertyList(filter.propertyList, name));
        if (!keep)
        {
            result.removeProperty(i);
            continue;
        }
        if (!filter.includeQualifiers)
        {
            removeQualifiers(property);
        }
        if (!filter.includeClassOrigin)
        {
            property.setClassOrigin(CIMName());
        }
    }
    if (!filter.includeQualifiers)
    {
        while (result.getQualifierCount() > 0)
        {
            result.removeQualifier(result.getQualifierCount() - 1);
        }
    }
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
