#include <ORV_InternalCacheService.h>

#include "ClassDefinitionCache.h"

PEGASUS_USING_PEGASUS;

struct ORV_InternalCacheService::_Store
{
    orvsib::ClassDefinitionCache classes;
};

ORV_InternalCacheService* ORV_InternalCacheService::getInstance()
{
    // Built on first use, thread-safely.
    static ORV_InternalCacheService instance;
    return &instance;
}

ORV_InternalCacheService::ORV_InternalCacheService() : _store(new _Store()) {}

ORV_InternalCacheService::~ORV_InternalCacheService()
{
    delete _store;
}

CIMClass ORV_InternalCacheService::getStoredCIMClass(
    CIMOMHandle& cimom, const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className, bool localOnly, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _store->classes.get(cimom, context, nameSpace, className, localOnly, includeQualifiers,
                               includeClassOrigin, propertyList);
}
