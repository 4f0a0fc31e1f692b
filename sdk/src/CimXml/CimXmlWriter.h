#ifndef ORV_CIMXML_CIMXMLWRITER_H
#define ORV_CIMXML_CIMXMLWRITER_H

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>

#include <string>
#include <string_view>

namespace orv
{
namespace cimxml
{

/// Encodes CIM objects as DSP0201 elements, with exactly the attributes the
/// DTD allows: strict clients (wbemcli, pywbem) reject anything else.

std::string escape(const std::string& text);
std::string str(const Pegasus::String& text);

/// Appends text escaped for XML (invalid UTF-8 and control characters
/// become U+FFFD); a String is cut at an embedded NUL, as str() cuts it.
void appendEscaped(std::string& out, std::string_view text);
void appendEscaped(std::string& out, const Pegasus::String& text);

/// Text form of one scalar of a value (booleans TRUE/FALSE).
void appendScalarText(std::string& out, const Pegasus::CIMValue& value, Pegasus::Uint32 index);

/// VALUE / VALUE.ARRAY / VALUE.REFERENCE / VALUE.REFARRAY; nothing if null.
void appendValue(std::string& out, const Pegasus::CIMValue& value);

void appendInstanceName(std::string& out, const Pegasus::CIMObjectPath& path);
void appendClassName(std::string& out, const Pegasus::CIMName& name);
void appendLocalNamespacePath(std::string& out, const Pegasus::CIMNamespaceName& ns);

/// INSTANCEPATH with HOST and namespace; empty ones are taken from the defaults.
void appendInstancePath(std::string& out, const Pegasus::CIMObjectPath& path,
                        const Pegasus::String& defaultHost,
                        const Pegasus::CIMNamespaceName& defaultNs);
void appendClassPath(std::string& out, const Pegasus::CIMObjectPath& path,
                     const Pegasus::String& defaultHost,
                     const Pegasus::CIMNamespaceName& defaultNs);

/// The most complete path form the path's content allows.
void appendValueReference(std::string& out, const Pegasus::CIMObjectPath& path);

void appendInstance(std::string& out, const Pegasus::CIMConstInstance& instance);
void appendClass(std::string& out, const Pegasus::CIMConstClass& cimClass);

/// RETURNVALUE with PARAMTYPE (always set; clients rely on it).
void appendReturnValue(std::string& out, const Pegasus::CIMValue& value);
void appendParamValue(std::string& out, const Pegasus::CIMParamValue& param);

void appendError(std::string& out, Pegasus::Uint32 code, const std::string& description);

/// The envelope around one response element.
std::string messageStart(const std::string& messageId);
std::string messageEnd();

} // namespace cimxml
} // namespace orv

#endif
