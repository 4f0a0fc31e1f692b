#ifndef Pegasus_ObjectPath_h
#define Pegasus_ObjectPath_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class CIMValue;
class CIMObjectPath;

// One key property of an object path: its name, its value as text and how
// that text is to be read.
class PEGASUS_COMMON_LINKAGE CIMKeyBinding
{
public:
    enum Type
    {
        BOOLEAN,
        STRING,
        NUMERIC,
        REFERENCE
    };

    CIMKeyBinding();
    CIMKeyBinding(const CIMKeyBinding& x);
    CIMKeyBinding(const CIMName& name, const String& value, Type type);
    // Throws TypeMismatchException for arrays and embedded objects.
    CIMKeyBinding(const CIMName& name, const CIMValue& value);
    ~CIMKeyBinding();

    CIMKeyBinding& operator=(const CIMKeyBinding& x);

    const CIMName& getName() const;
    void setName(const CIMName& name);
    const String& getValue() const;
    void setValue(const String& value);
    Type getType() const;
    void setType(Type type);

    // True when the value has a type this binding can hold and compares
    // equal by this binding's rules.
    Boolean equal(CIMValue value);

private:
    CIMName _name;
    String _value;
    Type _type;
};

// Same name (ignoring case), same type, and values equal by type: strings
// exactly, numbers numerically, booleans ignoring case, references as paths.
PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y);

// A reference to a CIM class or instance, with the text form
// //host/namespace:Class.key="value",... that clients send back to us.
class PEGASUS_COMMON_LINKAGE CIMObjectPath
{
public:
    CIMObjectPath();
    CIMObjectPath(const CIMObjectPath& x);
    // Parses the text form; throws MalformedObjectNameException.
    CIMObjectPath(const String& objectName);
    CIMObjectPath(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
                  const Array<CIMKeyBinding>& keyBindings = Array<CIMKeyBinding>());
    ~CIMObjectPath();

    CIMObjectPath& operator=(const CIMObjectPath& x);

    void clear();
    void set(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
             const Array<CIMKeyBinding>& keyBindings = Array<CIMKeyBinding>());
    // Parses the text form; throws MalformedObjectNameException and then
    // leaves the path unchanged.
    void set(const String& objectName);
    // Same as set(objectName).
    CIMObjectPath& operator=(const String& objectName);

    const String& getHost() const;
    // "name", "name:port", "[ipv6]" or "[ipv6]:port", or empty;
    // throws MalformedObjectNameException otherwise.
    void setHost(const String& host);
    const CIMNamespaceName& getNameSpace() const;
    void setNameSpace(const CIMNamespaceName& nameSpace);
    const CIMName& getClassName() const;
    void setClassName(const CIMName& className);
    const Array<CIMKeyBinding>& getKeyBindings() const;
    void setKeyBindings(const Array<CIMKeyBinding>& keyBindings);

    // Keys sorted by name ignoring case; string and reference values quoted
    // with '"' and '\' escaped by '\'.
    String toString() const;

    // Same host ignoring case, and namespace, class and key bindings equal
    // by the rules of CIMKeyBinding's operator==, in any key order.
    Boolean identical(const CIMObjectPath& x) const;
    // Equal for identical paths.
    Uint32 makeHashCode() const;

private:
    String _host;
    CIMNamespaceName _nameSpace;
    CIMName _className;
    Array<CIMKeyBinding> _keyBindings;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMObjectPath& x, const CIMObjectPath& y);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMObjectPath& x, const CIMObjectPath& y);

PEGASUS_NAMESPACE_END

#endif
