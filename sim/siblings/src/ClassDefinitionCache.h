#ifndef ORV_SIBLINGS_ClassDefinitionCache_h
#define ORV_SIBLINGS_ClassDefinitionCache_h

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace orvsib
{

// Class definitions keyed by everything that shapes a getClass answer
// (namespace, class, the three flags, the property list). Each distinct
// request reaches the object manager once, even when many threads ask for it
// at the same moment; failures are not remembered, so the next caller tries
// again. Callers get their own copy, so changing it cannot spoil the cache.
class ClassDefinitionCache
{
public:
    Pegasus::CIMClass get(Pegasus::CIMOMHandle& cimom, const Pegasus::OperationContext& context,
                          const Pegasus::CIMNamespaceName& nameSpace,
                          const Pegasus::CIMName& className, bool localOnly, bool includeQualifiers,
                          bool includeClassOrigin, const Pegasus::CIMPropertyList& propertyList);

    // Number of definitions held.
    size_t size() const;

    // Forgets every definition (for a schema reload).
    void clear();

    // The key under which a request is kept; equal for requests that differ
    // only in the letter case of names or in the order of the property list.
    static std::string makeKey(const Pegasus::CIMNamespaceName& nameSpace,
                               const Pegasus::CIMName& className, bool localOnly,
                               bool includeQualifiers, bool includeClassOrigin,
                               const Pegasus::CIMPropertyList& propertyList);

private:
    struct _Entry
    {
        std::mutex fetchLock;
        bool filled = false;
        Pegasus::CIMClass definition;
    };

    mutable std::mutex _lock;
    std::map<std::string, std::shared_ptr<_Entry>> _entries;
};

} // namespace orvsib

#endif
