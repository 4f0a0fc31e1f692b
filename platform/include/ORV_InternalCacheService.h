#ifndef ORV_InternalCacheService_h
#define ORV_InternalCacheService_h

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>

// Process-wide cache of class definitions shared by every provider module of
// the product. A class is asked of the object manager once per distinct
// request and served from memory afterwards; safe to call from any thread.
class ORV_InternalCacheService
{
public:
    static ORV_InternalCacheService* getInstance();

    Pegasus::CIMClass getStoredCIMClass(Pegasus::CIMOMHandle& cimom,
                                        const Pegasus::OperationContext& context,
                                        const Pegasus::CIMNamespaceName& nameSpace,
                                        const Pegasus::CIMName& className, bool localOnly,
                                        bool includeQualifiers, bool includeClassOrigin,
                                        const Pegasus::CIMPropertyList& propertyList);

private:
    ORV_InternalCacheService();
    ~ORV_InternalCacheService();
    ORV_InternalCacheService(const ORV_InternalCacheService&);
    ORV_InternalCacheService& operator=(const ORV_InternalCacheService&);

    struct _Store;
    _Store* _store;
};

#endif
