#ifndef ORV_CIMXML_CIMXMLDECODER_H
#define ORV_CIMXML_CIMXMLDECODER_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>

#include <libxml/tree.h>

#include <string>
#include <vector>

namespace orv
{
namespace cimxml
{

/// Decodes the DSP0201 elements that requests and responses share: names,
/// paths, instances and typed values. The server reads requests and the
/// client reads responses with the same code.

/// A fault in the content of one parameter, path or value.
struct DecodeFault
{
    Pegasus::CIMStatusCode code;
    std::string text;
};

[[noreturn]] void fault(const std::string& text,
                        Pegasus::CIMStatusCode code = Pegasus::CIM_ERR_INVALID_PARAMETER);

std::string nodeName(const xmlNode* node);
bool isElement(const xmlNode* node, const char* name);
bool attribute(const xmlNode* node, const char* name, std::string& out);
std::string nodeText(const xmlNode* node);
/// Element children; text between elements is layout only.
std::vector<const xmlNode*> elementChildren(const xmlNode* node);
std::string requiredAttribute(const xmlNode* node, const char* name);

Pegasus::CIMName cimName(const std::string& text, const std::string& what);
/// The slash-joined NAMESPACE names of a LOCALNAMESPACEPATH.
std::string namespaceText(const xmlNode* localNs);
Pegasus::CIMNamespaceName namespaceName(const std::string& text);

/// What a decoded path may hold, whatever the message: every level of a path
/// nested in a reference key quotes the one below it again, so its text
/// doubles per level.
struct PathLimits
{
    /// Bytes in one key value, a reference key's path text included.
    static const size_t maxKeyValueBytes = 64 * 1024;
    /// Paths nested in reference keys below the path that holds them.
    /// OpenPegasus and the clients we know nest two at most.
    static const unsigned maxReferenceDepth = 4;
};

/// depth: how many reference keys down from the outermost path this one is.
Pegasus::CIMObjectPath decodeInstanceName(const xmlNode* node, unsigned depth = 0);
/// Any of the six path forms that DSP0201 allows in a reference.
Pegasus::CIMObjectPath decodeObjectPath(const xmlNode* node, unsigned depth = 0);

/// A TYPE or PARAMTYPE attribute value.
bool parseType(const std::string& text, Pegasus::CIMType& type);
Pegasus::CIMProperty decodeProperty(const xmlNode* node);
Pegasus::CIMInstance decodeInstance(const xmlNode* node);
/// A PARAMVALUE: typed by its PARAMTYPE, or left as text (isTyped() false)
/// for the receiver to type from the method's declaration.
Pegasus::CIMParamValue decodeParamValue(const xmlNode* node);

/// Converts one text (or text array) value to the given type: integers
/// (decimal, or hex with 0x) range-checked, booleans TRUE/FALSE in any case,
/// reals, char16, datetimes, object paths. Throws
/// CIMException(CIM_ERR_INVALID_PARAMETER) naming `what` when it does not fit.
Pegasus::CIMValue valueFromText(const Pegasus::CIMValue& text, Pegasus::CIMType type,
                                Pegasus::Boolean isArray, const Pegasus::String& what);

} // namespace cimxml
} // namespace orv

#endif
