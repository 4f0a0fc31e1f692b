#include "ClassDefinitionCache.h"

#include <algorithm>
#include <cctype>
#include <vector>

PEGASUS_USING_PEGASUS;

namespace orvsib
{

namespace
{

std::string _lower(const String& text)
{
    std::string out = text.getCString().operator const char*();
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

} // namespace

std::string ClassDefinitionCache::makeKey(const CIMNamespaceName& nameSpace,
                                          const CIMName& className, bool localOnly,
                                          bool includeQualifiers, bool includeClassOrigin,
                                          const CIMPropertyList& propertyList)
{
    // '\n' cannot occur in CIM names, so it separates the parts safely.
    std::string key = _lower(nameSpace.getString());
    key += '\n';
    key += _lower(className.getString());
    key += '\n';
    key += localOnly ? '1' : '0';
    key += includeQualifiers ? '1' : '0';
    key += includeClassOrigin ? '1' : '0';
    if (propertyList.isNull())
    {
        key += "\nnull";
        return key;
    }
    // The order of a property list does not change the answer.
    std::vector<std::string> names;
    for (Uint32 i = 0; i < propertyList.size(); i++)
    {
        names.push_back(_lower(propertyList[i].getString()));
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    key += "\nlist";
    for (const std::string& name : names)
    {
        key += '\n';
        key += name;
    }
    return key;
}

CIMClass ClassDefinitionCache::get(CIMOMHandle& cimom, const OperationContext& context,
                                   const CIMNamespaceName& nameSpace, const CIMName& className,
                                   bool localOnly, bool includeQualifiers, bool includeClassOrigin,
                                   const CIMPropertyList& propertyList)
{
    const std::string key = makeKey(nameSpace, className, localOnly, includeQualifiers,
                                    includeClassOrigin, propertyList);
    std::shared_ptr<_Entry> entry;
    {
        std::lock_guard<std::mutex> guard(_lock);
        std::shared_ptr<_Entry>& slot = _entries[key];
        if (!slot)
        {
            slot = std::make_shared<_Entry>();
        }
        entry = slot;
    }

    // Only callers of the same request wait here; the map stays free while
    // the object manager answers.
    std::lock_guard<std::mutex> fetchGuard(entry->fetchLock);
    if (!entry->filled)
    {
        entry->definition = cimom.getClass(context, nameSpace, className, localOnly,
                                           includeQualifiers, includeClassOrigin, propertyList);
        entry->filled = true;
    }
    return entry->definition.clone();
}

size_t ClassDefinitionCache::size() const
{
    std::lock_guard<std::mutex> guard(_lock);
    size_t count = 0;
    for (const auto& item : _entries)
    {
        std::lock_guard<std::mutex> fetchGuard(item.second->fetchLock);
        if (item.second->filled)
        {
            count++;
        }
    }
    return count;
}

void ClassDefinitionCache::clear()
{
    std::lock_guard<std::mutex> guard(_lock);
    _entries.clear();
}

} // namespace orvsib
