#include <cimom/ParamTyping.h>

#include <CimXml/CimXmlDecoder.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_USING_PEGASUS;

namespace cimom
{

// Text values are read as CIM-XML gives them, by the codec the SDK shares.
CIMValue convertTextValue(const CIMValue& text, CIMType type, Boolean isArray, const String& what)
{
    return orv::cimxml::valueFromText(text, type, isArray, what);
}

Array<CIMParamValue> typeInParameters(const CIMMethod& method,
                                      const Array<CIMParamValue>& inParameters)
{
    Array<CIMParamValue> typed;
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        const CIMParamValue& given = inParameters[i];
        const String name = given.getParameterName();
        Uint32 pos = PEG_NOT_FOUND;
        try
        {
            pos = method.findParameter(CIMName(name));
        }
        catch (const Exception&)
        {
            pos = PEG_NOT_FOUND; // not even a legal name
        }
        if (pos == PEG_NOT_FOUND)
        {
            // Passed on as given, as OpenPegasus does: the provider judges
            // parameters its method does not declare.
            typed.append(given);
            continue;
        }
        CIMConstParameter declared = method.getParameter(pos);
        const String what = "parameter " + declared.getName().getString() + " of method " +
                            method.getName().getString();
        CIMValue value = given.getValue();

        bool textForReference = declared.getType() == CIMTYPE_REFERENCE && !value.isNull() &&
                                value.getType() == CIMTYPE_STRING;
        if (!given.isTyped() || textForReference)
        {
            value = convertTextValue(value, declared.getType(), declared.isArray(), what);
        }
        typed.append(CIMParamValue(declared.getName().getString(), value, true));
    }
    return typed;
}

} // namespace cimom
