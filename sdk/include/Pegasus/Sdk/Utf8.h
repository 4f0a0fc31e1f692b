#ifndef Pegasus_Sdk_Utf8_h
#define Pegasus_Sdk_Utf8_h

#include <string>

#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

namespace Sdk
{

// For encoders that build their output in a std::string: appends the UTF-8
// form of text, the same bytes as text.getCString(), without a buffer of
// its own in between.
PEGASUS_COMMON_LINKAGE void appendUtf8(std::string& out, const String& text);

} // namespace Sdk

PEGASUS_NAMESPACE_END

#endif
