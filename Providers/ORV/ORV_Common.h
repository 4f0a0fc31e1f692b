#ifndef ORV_Common_h
#define ORV_Common_h

#include <ctime>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "orvapi.h"

PEGASUS_USING_PEGASUS;

// Helpers shared by every provider of the statistics module. All members are
// static; the only process-wide state is the random-string generator and the
// cached management addresses.
class ORV_Common
{
public:
    // Namespace that the module serves and the prefix of its InstanceIDs.
    static const CIMNamespaceName NAMESPACE;
    static const String INSTANCE_ID_PREFIX;

    // ---- provider frame ---------------------------------------------------

    static CIMClass getStoredCIMClass(CIMOMHandle& cimom, const OperationContext& context,
                                      const CIMNamespaceName& nameSpace,
                                      const CIMName& className, bool localOnly,
                                      bool includeQualifiers, bool includeClassOrigin,
                                      const CIMPropertyList& propertyList);

    static CIMInstance buildInstanceSkeleton(CIMClass& cimClass);

    // True when both paths name the same instance: the hosts of the paths
    // and of their reference keys (one level deep) are ignored.
    static Boolean matchObjectPath(const CIMObjectPath& path1, const CIMObjectPath& path2);

    // The path of one of this module's instances, keyed by InstanceID alone,
    // in "root/orv" on the given host.
    static CIMObjectPath buildInstanceIDPath(const String& host, const CIMName& className,
                                             const String& instanceID);

    // The caller's user name; a context without an identity throws.
    static String getUserName(const OperationContext& context);

    // Opens the management API for the caller; a refusal throws
    // CIM_ERR_ACCESS_DENIED "Insufficient privilege for the user", traced
    // with the given source file and line.
    static void authorizeUser(const OperationContext& context, const char* file, Uint32 line);

    // Throws CIMNotSupportedException(providerName + " Invalid class name" +
    // requested) unless the requested class is the served one.
    static void checkClassName(const CIMName& requested, const CIMName& served,
                               const String& providerName);

    // Value of the first key binding called keyName; false when there is none.
    static Boolean findFirstKey(const CIMObjectPath& path, const CIMName& keyName,
                                String& value);

    // ---- system identity --------------------------------------------------

    static CIMObjectPath buildInternalCacheObjectPath(const String& host,
                                                      const String& systemName);

    static CIMValue invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& path,
                                 const CIMName& methodName,
                                 const Array<CIMParamValue>& inParams,
                                 Array<CIMParamValue>& outParams);

    static Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& nameSpace,
                                                       const CIMName& className);

    static String getSystemName(CIMOMHandle& cimom);
    static String getSystemName();
    static Uint32 getSystemID();
    static Uint8 isQuadPortSystem(CIMOMHandle& cimom);
    static Sint32 getSystemType();
    static String getSystemHostName(CIMOMHandle& cimom);
    static String getSystemAddress(CIMOMHandle& cimom);

    static CIMObjectPath getSystemObjectPath(CIMOMHandle& cimom);
    static CIMObjectPath getSystemPkgObjectPath(CIMOMHandle& cimom);
    static CIMObjectPath getSystemViewObjectPath(CIMOMHandle& cimom);

    // type: an IP_TYPE_VER value.
    static String getSystemIPAddr(int type);

    // ---- property and parameter values ------------------------------------
    // Readers answer 0 (found), 3 (absent) or 4 (null); the output is left
    // unchanged unless the answer is 0.

    static Uint32 getProperty(CIMInstance& instance, const String& name, CIMObjectPath& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name, Array<String>& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name, Array<int>& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name,
                              Array<unsigned short>& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name,
                              unsigned long long& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name, unsigned int& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name,
                              unsigned short& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name, unsigned char& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name, bool& value);
    static Uint32 getProperty(CIMInstance& instance, const String& name, CIMDateTime& value);

    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               unsigned char& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               unsigned short& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               Array<unsigned short>& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               unsigned int& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               unsigned long long& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               bool& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               CIMDateTime& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               CIMObjectPath& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               String& value);
    static Uint32 getParameter(const Array<CIMParamValue>& params, const String& name,
                               Array<String>& value);

    static String getStringProperty(const CIMInstance& instance, const String& name);
    // The last key binding of that name wins.
    static String getStringProperty(const CIMObjectPath& path, const String& name);
    static CIMValue getPropertyValue(const CIMInstance& instance, const String& name);

    // Writers set only properties that the instance already has.
    static void setPropertyValue(CIMInstance& instance, CIMName name, const String& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name, const bool& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const unsigned char& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const unsigned short& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const unsigned int& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const unsigned long long& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name, const short& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const Array<String>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const Array<unsigned short>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name, const Array<int>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const Array<unsigned long long>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name, const Array<bool>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const Array<CIMDateTime>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name,
                                 const CIMObjectPath& value);
    static void setPropertyValue(CIMInstance& instance, CIMName name, const CIMDateTime& value);
    // Embedded instance: replaces or adds the property.
    static void setPropertyValue(CIMInstance& instance, CIMName name, const CIMInstance& value);
    static void setPropertyValueToNull(CIMInstance& instance, CIMName name, CIMType type);

    // ---- date-times and identifiers ---------------------------------------

    static CIMDateTime getCIMDateTime(long t);
    static time_t getDateTime(const CIMDateTime& dt);
    static int _formatDateTime(const char* text, tm* out);
    static String getTimeZone();
    static String extractFromInstanceID(const String& instanceID);
    static void generate_random_string(char* str, unsigned int len);
    static unsigned int getInstanceThreshold(unsigned int maxInstScale);
    static int getNodePairIndex(int node);

    // ---- associations -----------------------------------------------------

    static CIMObjectPath buildAssocPath(const CIMName& assocClass, const String& role1,
                                        const String& role2, const CIMObjectPath& ref1,
                                        const CIMObjectPath& ref2, const String& host,
                                        String nameSpace);

    static CIMInstance buildAssocInstance(const CIMName& assocClass, const String& role1,
                                          const String& role2, const CIMObjectPath& ref1,
                                          const CIMObjectPath& ref2, CIMClass& assocClassDef,
                                          const String& host, String nameSpace);

    static Boolean isPartOfArray(const CIMName& name, const Array<CIMName>& names);
};

#endif
