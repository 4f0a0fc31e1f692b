#include "ORV_Common.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_InternalCacheService.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

const CIMNamespaceName ORV_Common::NAMESPACE("root/orv");
const String ORV_Common::INSTANCE_ID_PREFIX("QZ_KYRO");

namespace
{

const CIMNamespaceName INTERNAL_NAMESPACE("root/PG_Internal");
const CIMName INTERNAL_CACHE_CLASS("ORV_InternalCache");
const String LOCALHOST("localhost");

const int LOG_ERROR = 2;
const int LOG_WARN = 3;
const int LOG_TRACE = 4;

// The management addresses are asked once per process; request threads
// share them, so they are filled and read under their lock.
std::mutex g_ipAddrMutex;
String g_ipv4Addr;
String g_ipv6Addr;

// Reentrant random state of generate_random_string, seeded on first use.
// random_r is reentrant only per state, and the state is shared by all
// request threads, so seeding and drawing are serialised.
std::mutex g_randomMutex;
bool g_randomSeeded = false;
char g_randomStateBuf[256];
struct random_data g_randomState;

const char RANDOM_ALPHABET[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

void assertFailed(const char* expr, const char* file, int line)
{
    orv_print_no_evt("Assertion failed: %s\n", expr);
    orv_print_no_evt("Assertion point: file: %s, line: %d\n", file, line);
    // The two lines above are the whole report; the panic adds no text.
    orv_panic("%s", "");
}

// First output parameter of an internal-cache method, when it is named as
// expected and not null.
bool firstOutParam(const Array<CIMParamValue>& out, const char* paramName, CIMValue& value)
{
    if (out.size() == 0)
    {
        return false;
    }
    CIMParamValue first = out[0];
    if (!String::equalNoCase(first.getParameterName(), paramName))
    {
        return false;
    }
    value = first.getValue();
    return !value.isNull();
}

// Asks the internal cache over the local client and, when `cimom` is given,
// falls back to the handle if the local call throws anything.
Array<CIMParamValue> askInternalCache(const CIMName& methodName, CIMOMHandle* cimom)
{
    CIMObjectPath path = ORV_Common::buildInternalCacheObjectPath(LOCALHOST, LOCALHOST);
    Array<CIMParamValue> in;
    Array<CIMParamValue> out;
    if (!cimom)
    {
        ORV_Common::invokeMethod(INTERNAL_NAMESPACE, path, methodName, in, out);
        return out;
    }
    try
    {
        ORV_Common::invokeMethod(INTERNAL_NAMESPACE, path, methodName, in, out);
    }
    catch (...)
    {
        out.clear();
        cimom->invokeMethod(OperationContext(), INTERNAL_NAMESPACE, path, methodName, in, out);
    }
    return out;
}

String askString(const CIMName& methodName, const char* paramName, CIMOMHandle* cimom)
{
    String result;
    Array<CIMParamValue> out = askInternalCache(methodName, cimom);
    CIMValue value;
    if (firstOutParam(out, paramName, value))
    {
        value.get(result);
    }
    return result;
}

// Lists the names of a singleton class of the sibling module, first over the
// local client, then through the handle. `guardHandle` decides whether a
// failure of the handle is logged and swallowed or passed on.
Array<CIMObjectPath> listSystemNames(CIMOMHandle& cimom, const CIMName& className,
                                     const char* opName, bool guardHandle)
{
    Array<CIMObjectPath> names;
    try
    {
        names = ORV_Common::enumerateInstanceNames(ORV_Common::NAMESPACE, className);
        return names;
    }
    catch (Exception& e)
    {
        log_message(LOG_ERROR, "ORV_Common::%s: %s. Trying via cimom.\n", opName,
                    (const char*)e.getMessage().getCString());
    }
    catch (...)
    {
        log_message(LOG_ERROR, "ORV_Common::%s: Unknown exception! Trying via cimom\n", opName);
    }
    if (!guardHandle)
    {
        return cimom.enumerateInstanceNames(OperationContext(), ORV_Common::NAMESPACE,
                                            className);
    }
    try
    {
        names = cimom.enumerateInstanceNames(OperationContext(), ORV_Common::NAMESPACE,
                                             className);
    }
    catch (Exception& e)
    {
        log_message(LOG_ERROR, "ORV_Common::%s: %s.\n", opName,
                    (const char*)e.getMessage().getCString());
        names.clear();
    }
    catch (...)
    {
        log_message(LOG_ERROR, "ORV_Common::%s: Unknown exception in cimom!\n", opName);
        names.clear();
    }
    return names;
}

// One level of key normalisation: a string or reference key whose value
// parses as an object path becomes a host-less reference to it.
Array<CIMKeyBinding> normaliseKeys(const Array<CIMKeyBinding>& keys)
{
    Array<CIMKeyBinding> result = keys;
    for (Uint32 i = 0; i < result.size(); i++)
    {
        CIMKeyBinding& kb = result[i];
        if (kb.getType() != CIMKeyBinding::STRING && kb.getType() != CIMKeyBinding::REFERENCE)
        {
            continue;
        }
        String value = kb.getValue();
        if (value.size() == 0)
        {
            continue;
        }
        CIMObjectPath ref;
        try
        {
            ref.set(value);
        }
        catch (...)
        {
            // A plain string key: compare it as it is.
            continue;
        }
        CIMObjectPath hostless(String(), ref.getNameSpace(), ref.getClassName(),
                               ref.getKeyBindings());
        kb.setValue(hostless.toString());
        kb.setType(CIMKeyBinding::REFERENCE);
    }
    return result;
}

String joinStrings(const Array<String>& values)
{
    String text;
    for (Uint32 i = 0; i < values.size(); i++)
    {
        if (i > 0)
        {
            text.append(", ");
        }
        text.append(values[i]);
    }
    return text;
}

// Shared body of the property readers.
template <class T>
Uint32 readProperty(CIMInstance& instance, const String& name, T& value)
{
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos == PEG_NOT_FOUND)
    {
        return 3;
    }
    CIMValue v = instance.getProperty(pos).getValue();
    if (v.isNull())
    {
        return 4;
    }
    v.get(value);
    return 0;
}

// Shared body of the parameter readers: a null parameter of the name reads
// as 4 only when a non-null one follows it; otherwise the result is 3.
template <class T>
Uint32 readParameter(const Array<CIMParamValue>& params, const String& name, T& value)
{
    Uint32 status = 0;
    for (Uint32 i = 0; i < params.size(); i++)
    {
        if (!String::equalNoCase(params[i].getParameterName(), name))
        {
            continue;
        }
        CIMValue v = params[i].getValue();
        if (v.isNull())
        {
            status = 4;
            continue;
        }
        v.get(value);
        return status;
    }
    return 3;
}

const char* cstr(const CString& s)
{
    return (const char*)s;
}

template <class T>
void setIfPresent(CIMInstance& instance, const CIMName& name, const T& value)
{
    Uint32 pos = instance.findProperty(name);
    if (pos != PEG_NOT_FOUND)
    {
        instance.getProperty(pos).setValue(CIMValue(value));
    }
}

} // namespace

// ---------------------------------------------------------------------------
// Provider frame

CIMClass ORV_Common::getStoredCIMClass(CIMOMHandle& cimom, const OperationContext& context,
                                       const CIMNamespaceName& nameSpace,
                                       const CIMName& className, bool localOnly,
                                       bool includeQualifiers, bool includeClassOrigin,
                                       const CIMPropertyList& propertyList)
{
    return ORV_InternalCacheService::getInstance()->getStoredCIMClass(
        cimom, context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin,
        propertyList);
}

CIMInstance ORV_Common::buildInstanceSkeleton(CIMClass& cimClass)
{
    log_message(LOG_TRACE, "-->ORV_Common::_buildInstanceSkeleton()\n");
    CIMInstance instance = cimClass.buildInstance(true, true, CIMPropertyList());
    log_message(LOG_TRACE, "<--ORV_Common::_buildInstanceSkeleton()\n");
    return instance;
}

CIMObjectPath ORV_Common::buildInstanceIDPath(const String& host, const CIMName& className,
                                              const String& instanceID)
{
    static const CIMName INSTANCE_ID("InstanceID");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(INSTANCE_ID, instanceID, CIMKeyBinding::STRING));
    return CIMObjectPath(host, NAMESPACE, className, keys);
}

Boolean ORV_Common::matchObjectPath(const CIMObjectPath& path1, const CIMObjectPath& path2)
{
    CIMObjectPath p1(String(), path1.getNameSpace(), path1.getClassName(),
                     normaliseKeys(path1.getKeyBindings()));
    CIMObjectPath p2(String(), path2.getNameSpace(), path2.getClassName(),
                     normaliseKeys(path2.getKeyBindings()));
    return p1.identical(p2);
}

String ORV_Common::getUserName(const OperationContext& context)
{
    // A request without an identity is the server's mistake, not an anonymous
    // caller: the framework's exception goes back rather than an empty name,
    // which the management API would take for the server itself.
    IdentityContainer container = context.get(IdentityContainer::NAME);
    return container.getUserName();
}

void ORV_Common::authorizeUser(const OperationContext& context, const char* file, Uint32 line)
{
    String user = getUserName(context);
    if (api_orvOpenForCimserver(user.getCString()) != 0)
    {
        throw TraceableCIMException(CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user",
                                    String(file), line);
    }
}

void ORV_Common::checkClassName(const CIMName& requested, const CIMName& served,
                                const String& providerName)
{
    if (!requested.equal(served))
    {
        throw CIMNotSupportedException(providerName + " Invalid class name" +
                                       requested.getString());
    }
}

Boolean ORV_Common::findFirstKey(const CIMObjectPath& path, const CIMName& keyName,
                                 String& value)
{
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(keyName))
        {
            value = keys[i].getValue();
            return true;
        }
    }
    return false;
}

// ---------------------------------------------------------------------------
// System identity

CIMObjectPath ORV_Common::buildInternalCacheObjectPath(const String& host,
                                                       const String& systemName)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), systemName + "-InternalCache",
                              CIMKeyBinding::STRING));
    return CIMObjectPath(host, INTERNAL_NAMESPACE, INTERNAL_CACHE_CLASS, keys);
}

CIMValue ORV_Common::invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& path,
                                  const CIMName& methodName,
                                  const Array<CIMParamValue>& inParams,
                                  Array<CIMParamValue>& outParams)
{
    log_message(LOG_TRACE, "-->ORV_Common::invokeMethod()\n");
    CIMClient client;
    client.connectLocal();
    CIMValue result = client.invokeMethod(nameSpace, path, methodName, inParams, outParams);
    client.disconnect();
    log_message(LOG_TRACE, "<--ORV_Common::invokeMethod()\n");
    return result;
}

Array<CIMObjectPath> ORV_Common::enumerateInstanceNames(const CIMNamespaceName& nameSpace,
                                                        const CIMName& className)
{
    log_message(LOG_TRACE, "-->ORV_Common::enumerateInstanceNames()\n");
    CIMClient client;
    client.connectLocal();
    Array<CIMObjectPath> names = client.enumerateInstanceNames(nameSpace, className);
    client.disconnect();
    log_message(LOG_TRACE, "<--ORV_Common::enumerateInstanceNames()\n");
    return names;
}

String ORV_Common::getSystemName(CIMOMHandle& cimom)
{
    return askString(CIMName("GetSystemName"), "SystemName", &cimom);
}

String ORV_Common::getSystemName()
{
    return askString(CIMName("GetSystemName"), "SystemName", 0);
}

Uint32 ORV_Common::getSystemID()
{
    Uint32 result = 0;
    Array<CIMParamValue> out = askInternalCache(CIMName("GetSystemID"), 0);
    CIMValue value;
    if (firstOutParam(out, "SystemID", value))
    {
        value.get(result);
    }
    return result;
}

Uint8 ORV_Common::isQuadPortSystem(CIMOMHandle& cimom)
{
    Uint8 result = 0;
    Array<CIMParamValue> out = askInternalCache(CIMName("IsQuadPortSystem"), &cimom);
    CIMValue value;
    if (firstOutParam(out, "IsQuadPort", value))
    {
        value.get(result);
    }
    return result;
}

Sint32 ORV_Common::getSystemType()
{
    Sint32 result = 0;
    Array<CIMParamValue> out = askInternalCache(CIMName("GetSystemType"), 0);
    CIMValue value;
    if (firstOutParam(out, "SystemType", value))
    {
        value.get(result);
    }
    return result;
}

String ORV_Common::getSystemHostName(CIMOMHandle& /*cimom*/)
{
    // Deliberately no fallback to the handle: initialize fails when the local
    // connection cannot be made.
    return askString(CIMName("GetSystemHostName"), "SystemHostName", 0);
}

String ORV_Common::getSystemAddress(CIMOMHandle& cimom)
{
    return askString(CIMName("GetSystemAddress"), "SystemAddress", &cimom);
}

CIMObjectPath ORV_Common::getSystemObjectPath(CIMOMHandle& cimom)
{
    log_message(LOG_TRACE, "-->ORV_Common::getSystemObjectPath()\n");
    Array<CIMObjectPath> names =
        listSystemNames(cimom, CIMName("ORV_StorageSystem"), "getSystemObjectPath", false);
    if (names.size() == 0)
    {
        log_message(LOG_ERROR, "cannot get at system object path\n");
        return CIMObjectPath();
    }
    CIMObjectPath path = names[0];
    path.setHost(getSystemHostName(cimom));
    path.setNameSpace(NAMESPACE);
    log_message(LOG_TRACE, "<--ORV_Common::getSystemObjectPath()\n");
    return path;
}

CIMObjectPath ORV_Common::getSystemPkgObjectPath(CIMOMHandle& cimom)
{
    Array<CIMObjectPath> names =
        listSystemNames(cimom, CIMName("ORV_SystemPackage"), "getSystemPkgObjectPath", true);
    if (names.size() == 0)
    {
        log_message(LOG_ERROR, "cannot get at system pkg object path\n");
        return CIMObjectPath();
    }
    CIMObjectPath path = names[0];
    path.setHost(getSystemHostName(cimom));
    path.setNameSpace(NAMESPACE);
    return path;
}

CIMObjectPath ORV_Common::getSystemViewObjectPath(CIMOMHandle& cimom)
{
    log_message(LOG_TRACE, "-->ORV_Common::getSystemViewObjectPath()\n");
    Array<CIMObjectPath> names = listSystemNames(cimom, CIMName("ORV_StorageSystemView"),
                                                 "getSystemViewObjectPath", true);
    if (names.size() == 0)
    {
        log_message(LOG_ERROR, "cannot get at system view object path\n");
        return CIMObjectPath();
    }
    CIMObjectPath path = names[0];
    path.setHost(getSystemHostName(cimom));
    path.setNameSpace(NAMESPACE);
    log_message(LOG_TRACE, "<--ORV_Common::getSystemViewObjectPath()\n");
    return path;
}

String ORV_Common::getSystemIPAddr(int type)
{
    if (type != IP_TYPE_V4 && type != IP_TYPE_V6)
    {
        log_message(LOG_ERROR, "ORV_Common, getSystemIPAddr: Invalid IP type parameter!\n");
        return String();
    }
    std::lock_guard<std::mutex> lock(g_ipAddrMutex);
    if (g_ipv4Addr.size() == 0)
    {
        api_ipaddr_t addr;
        memset(&addr, 0, sizeof(addr));
        if (api_getSystemDualIP(&addr) != 0)
        {
            return String();
        }
        struct in_addr v4;
        v4.s_addr = addr.ipv4_addr;
        g_ipv4Addr = String(inet_ntoa(v4));
        if (addr.dual_flag > 2)
        {
            char buf[128];
            if (inet_ntop(AF_INET6, &addr.ipv6_addr, buf, sizeof(buf)))
            {
                g_ipv6Addr = String(buf);
            }
        }
    }
    return type == IP_TYPE_V4 ? g_ipv4Addr : g_ipv6Addr;
}

// ---------------------------------------------------------------------------
// Property and parameter readers

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name, CIMObjectPath& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(Array<String>), propertyName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readProperty(instance, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(Array<String>), value = %s\n",
                cstr(value.toString().getCString()));
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name, Array<String>& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(Array<String>), propertyName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readProperty(instance, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(Array<String>), value = %s\n",
                cstr(joinStrings(value).getCString()));
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name, Array<int>& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(Array<Sint32>), propertyName = %s\n",
                cstr(name.getCString()));
    Array<Sint32> v;
    Uint32 rc = readProperty(instance, name, v);
    if (rc == 0)
    {
        value.clear();
        for (Uint32 i = 0; i < v.size(); i++)
        {
            value.append(v[i]);
        }
    }
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(Array<Sint32>)\n");
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name,
                               Array<unsigned short>& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(Array<Uint16>), propertyName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readProperty(instance, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(Array<Uint16>)\n");
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name,
                               unsigned long long& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(uint64), propertyName = %s\n",
                cstr(name.getCString()));
    Uint64 v = value;
    Uint32 rc = readProperty(instance, name, v);
    value = v;
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(uint64), value = %llu\n", value);
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name, unsigned int& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(uint32), propertyName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readProperty(instance, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(uint32), value = %d\n", value);
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name,
                               unsigned short& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(uint16), propertyName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readProperty(instance, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(uint16), value = %d\n", value);
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name, unsigned char& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(uint8), propertyName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readProperty(instance, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(uint8), value = %d\n", value);
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name, bool& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(Boolean), propertyName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readProperty(instance, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(Boolean), value = %d\n", value);
    return rc;
}

Uint32 ORV_Common::getProperty(CIMInstance& instance, const String& name, CIMDateTime& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getProperty(CIMDateTime), propertyName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readProperty(instance, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getProperty(CIMDateTime), value = %s\n",
                cstr(value.toString().getCString()));
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                unsigned char& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(Uint8), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(Uint8), paramValue = %d\n", value);
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                unsigned short& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(Uint16), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(Uint16), paramValue = %d\n", value);
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                Array<unsigned short>& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(Array<Uint16>), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(Array<Uint16>)\n");
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                unsigned int& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(Uint32), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(Uint32), paramValue = %d\n", value);
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                unsigned long long& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(Uint64), paramName = %s\n",
                cstr(name.getCString()));
    Uint64 v = value;
    Uint32 rc = readParameter(params, name, v);
    value = v;
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(Uint64), paramValue = %llu\n", value);
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                bool& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(Boolean), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(Boolean), paramValue = %d\n", value);
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                CIMDateTime& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(CIMDateTime), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(CIMDateTime), paramValue = %s\n",
                cstr(value.toString().getCString()));
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                CIMObjectPath& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(CIMObjectPath), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(CIMObjectPath), paramValue = %s\n",
                cstr(value.toString().getCString()));
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                String& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(String), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(String), paramValue = %s\n",
                cstr(value.getCString()));
    return rc;
}

Uint32 ORV_Common::getParameter(const Array<CIMParamValue>& params, const String& name,
                                Array<String>& value)
{
    log_message(LOG_TRACE, "-->ORV_Common::getParameter(Array<String>), paramName = %s\n",
                cstr(name.getCString()));
    Uint32 rc = readParameter(params, name, value);
    log_message(LOG_TRACE, "<--ORV_Common::getParameter(Array<String>)\n");
    return rc;
}

String ORV_Common::getStringProperty(const CIMInstance& instance, const String& name)
{
    log_message(LOG_TRACE, "-->ORV_Common::getStringProperty(), propertyName = %s\n",
                cstr(name.getCString()));
    String result;
    if (name.size() == 0 || instance.isUninitialized())
    {
        log_message(LOG_WARN, "\tInvalid property name.\n");
        return result;
    }
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos != PEG_NOT_FOUND)
    {
        CIMValue v = instance.getProperty(pos).getValue();
        if (!v.isNull())
        {
            v.get(result);
        }
    }
    log_message(LOG_TRACE, "<--ORV_Common::getStringProperty(), value = %s\n",
                cstr(result.getCString()));
    return result;
}

String ORV_Common::getStringProperty(const CIMObjectPath& path, const String& name)
{
    log_message(LOG_TRACE, "-->ORV_Common::getStringProperty(), propertyName = %s\n",
                cstr(name.getCString()));
    String result;
    if (name.size() == 0)
    {
        log_message(LOG_WARN, "\tInvalid property name.\n");
        return result;
    }
    CIMName keyName(name);
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(keyName))
        {
            result = keys[i].getValue();
        }
    }
    log_message(LOG_TRACE, "<--ORV_Common::getStringProperty(), value = %s\n",
                cstr(result.getCString()));
    return result;
}

CIMValue ORV_Common::getPropertyValue(const CIMInstance& instance, const String& name)
{
    log_message(LOG_TRACE, "-->ORV_Common::getStringProperty(), propertyName = %s\n",
                cstr(name.getCString()));
    CIMValue result;
    if (name.size() == 0 || instance.isUninitialized())
    {
        log_message(LOG_WARN, "\tInvalid property name.\n");
        return result;
    }
    Uint32 pos = instance.findProperty(CIMName(name));
    if (pos != PEG_NOT_FOUND)
    {
        result = instance.getProperty(pos).getValue();
    }
    log_message(LOG_TRACE, "<--ORV_Common::getStringProperty()\n");
    return result;
}

// ---------------------------------------------------------------------------
// Property writers

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name, const String& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name, const bool& value)
{
    setIfPresent(instance, name, Boolean(value));
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const unsigned char& value)
{
    setIfPresent(instance, name, Uint8(value));
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const unsigned short& value)
{
    setIfPresent(instance, name, Uint16(value));
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const unsigned int& value)
{
    setIfPresent(instance, name, Uint32(value));
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const unsigned long long& value)
{
    setIfPresent(instance, name, Uint64(value));
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name, const short& value)
{
    setIfPresent(instance, name, Sint16(value));
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const Array<String>& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const Array<unsigned short>& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name, const Array<int>& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const Array<unsigned long long>& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name, const Array<bool>& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const Array<CIMDateTime>& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name,
                                  const CIMObjectPath& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name, const CIMDateTime& value)
{
    setIfPresent(instance, name, value);
}

void ORV_Common::setPropertyValue(CIMInstance& instance, CIMName name, const CIMInstance& value)
{
    Uint32 pos = instance.findProperty(name);
    if (pos != PEG_NOT_FOUND)
    {
        instance.removeProperty(pos);
    }
    instance.addProperty(CIMProperty(name, CIMValue(value), 0, CIMName(), CIMName(), false));
}

void ORV_Common::setPropertyValueToNull(CIMInstance& instance, CIMName name, CIMType type)
{
    Uint32 pos = instance.findProperty(name);
    if (pos != PEG_NOT_FOUND)
    {
        instance.getProperty(pos).setValue(CIMValue(type, false, 0));
    }
}

// ---------------------------------------------------------------------------
// Date-times and identifiers

CIMDateTime ORV_Common::getCIMDateTime(long t)
{
    time_t secs = (time_t)t;
    struct tm local;
    memset(&local, 0, sizeof(local));
    localtime_r(&secs, &local);
    long offsetMinutes = local.tm_gmtoff / 60;
    // The records of one query share their sample time (and a start time),
    // so an enumeration asks for the same few values thousands of times.
    struct Recent
    {
        bool valid = false;
        time_t secs = 0;
        long offset = 0;
        CIMDateTime value;
    };
    thread_local Recent recent[4];
    thread_local unsigned next = 0;
    for (const Recent& r : recent)
    {
        if (r.valid && r.secs == secs && r.offset == local.tm_gmtoff)
        {
            return r.value;
        }
    }
    char text[64];
    snprintf(text, sizeof(text), "%04d%02d%02d%02d%02d%02d.%06d+%03ld", local.tm_year + 1900,
             local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, 0,
             offsetMinutes < 0 ? -offsetMinutes : offsetMinutes);
    if (offsetMinutes < 0)
    {
        text[21] = '-';
    }
    CIMDateTime result;
    result.clear();
    result.set(String(text));
    Recent& slot = recent[next++ % 4];
    slot.value = result;
    slot.secs = secs;
    slot.offset = local.tm_gmtoff;
    slot.valid = true;
    return result;
}

time_t ORV_Common::getDateTime(const CIMDateTime& dt)
{
    String text = dt.toString();
    struct tm parsed;
    if (_formatDateTime(text.getCString(), &parsed) != 1)
    {
        return 0;
    }
    time_t result = mktime(&parsed);
    if (result == (time_t)-1)
    {
        throw DateTimeOutOfRangeException(text);
    }
    return result;
}

int ORV_Common::_formatDateTime(const char* text, tm* out)
{
    if (!text || !out)
    {
        return 0;
    }
    char buf[26];
    memset(buf, 0, sizeof(buf));
    strncpy(buf, text, 25);
    memset(out, 0, sizeof(*out));

    // Reads a fixed-width decimal field; fields past the end read as 0.
    auto field = [&buf](int start, int width) {
        char part[8];
        memset(part, 0, sizeof(part));
        int avail = (int)strlen(buf) - start;
        if (avail > 0)
        {
            memcpy(part, buf + start, avail < width ? avail : width);
        }
        return atoi(part);
    };

    int year = field(0, 4);
    if (year == 0)
    {
        return 0;
    }
    if (year < 0)
    {
        return -1;
    }
    out->tm_year = year - 1900;
    if (out->tm_year < 0)
    {
        return -1;
    }
    out->tm_mon = field(4, 2) - 1;
    if (out->tm_mon < 0)
    {
        return -1;
    }
    out->tm_mday = field(6, 2);
    out->tm_hour = field(8, 2);
    out->tm_min = field(10, 2);
    out->tm_sec = field(12, 2);
    // tm_isdst stays 0 from the clearing above: the text is read as local
    // standard time, whatever the zone's daylight saving says.
    return 1;
}

String ORV_Common::getTimeZone()
{
    tzset();
    time_t now = time(0);
    struct tm local;
    memset(&local, 0, sizeof(local));
    localtime_r(&now, &local);
    long minutes = local.tm_gmtoff / 60;
    long hours = (minutes < 0 ? -minutes : minutes) / 60;
    char text[32];
    snprintf(text, sizeof(text), minutes < 1 ? "GMT-%ld" : "GMT+%ld", hours);
    return String(text);
}

String ORV_Common::extractFromInstanceID(const String& instanceID)
{
    String prefix = INSTANCE_ID_PREFIX + ":";
    Uint32 pos = instanceID.find(prefix);
    if (pos == PEG_NOT_FOUND)
    {
        return String();
    }
    return instanceID.subString(pos + prefix.size());
}

void ORV_Common::generate_random_string(char* str, unsigned int len)
{
    if (!(len > 0 && str != NULL))
    {
        assertFailed("len > 0 && str != NULL", __FILE__, __LINE__);
    }
    std::lock_guard<std::mutex> lock(g_randomMutex);
    if (!g_randomSeeded)
    {
        memset(&g_randomState, 0, sizeof(g_randomState));
        initstate_r((unsigned int)time(0), g_randomStateBuf, sizeof(g_randomStateBuf),
                    &g_randomState);
        g_randomSeeded = true;
    }
    const unsigned int alphabetLen = sizeof(RANDOM_ALPHABET) - 1;
    for (unsigned int i = 0; i + 1 < len; i++)
    {
        int32_t r = 0;
        random_r(&g_randomState, &r);
        str[i] = RANDOM_ALPHABET[r % alphabetLen];
    }
    str[len - 1] = '\0';
}

unsigned int ORV_Common::getInstanceThreshold(unsigned int maxInstScale)
{
    struct rlimit limit;
    memset(&limit, 0, sizeof(limit));
    getrlimit(RLIMIT_AS, &limit);
    unsigned int softLimit = (unsigned int)(limit.rlim_cur / 1000000);
    log_message(LOG_TRACE, "soft limit = %u, maxInstScale factor = %u\n", softLimit,
                maxInstScale);
    return softLimit * maxInstScale;
}

int ORV_Common::getNodePairIndex(int node)
{
    if (node < 0 || node > 7)
    {
        return -1;
    }
    return node / 2;
}

// ---------------------------------------------------------------------------
// Associations

CIMObjectPath ORV_Common::buildAssocPath(const CIMName& assocClass, const String& role1,
                                         const String& role2, const CIMObjectPath& ref1,
                                         const CIMObjectPath& ref2, const String& host,
                                         String nameSpace)
{
    CIMObjectPath path(host, CIMNamespaceName(nameSpace), assocClass);
    CIMObjectPath r1 = ref1;
    r1.setHost(host);
    CIMObjectPath r2 = ref2;
    r2.setHost(host);
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName(role1), r1.toString(), CIMKeyBinding::REFERENCE));
    keys.append(CIMKeyBinding(CIMName(role2), r2.toString(), CIMKeyBinding::REFERENCE));
    path.setKeyBindings(keys);
    return path;
}

CIMInstance ORV_Common::buildAssocInstance(const CIMName& assocClass, const String& role1,
                                           const String& role2, const CIMObjectPath& ref1,
                                           const CIMObjectPath& ref2, CIMClass& assocClassDef,
                                           const String& host, String nameSpace)
{
    CIMInstance instance = buildInstanceSkeleton(assocClassDef);
    CIMObjectPath r1 = ref1;
    r1.setHost(host);
    CIMObjectPath r2 = ref2;
    r2.setHost(host);
    setPropertyValue(instance, CIMName(role1), r1);
    setPropertyValue(instance, CIMName(role2), r2);
    instance.setPath(buildAssocPath(assocClass, role1, role2, ref1, ref2, host, nameSpace));
    return instance;
}

Boolean ORV_Common::isPartOfArray(const CIMName& name, const Array<CIMName>& names)
{
    for (Uint32 i = 0; i < names.size(); i++)
    {
        if (name.equal(names[i]))
        {
            return true;
        }
    }
    return false;
}
