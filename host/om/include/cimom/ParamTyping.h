#ifndef CIMOM_PARAMTYPING_H
#define CIMOM_PARAMTYPING_H

#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>

namespace cimom
{

/**
    Gives in-parameters the types their method declares.

    Clients such as wbemcli send parameter values as untyped text (or an
    array of texts); a CIMParamValue with isTyped() false holding a String
    or Array<String> is converted to the declared type: integers (decimal,
    or hex with 0x) range-checked, booleans TRUE/FALSE in any case, reals,
    char16, datetimes, references parsed as object paths. Typed values
    pass unchanged, except a String or object path text for a reference
    parameter, which becomes a CIMObjectPath. Parameters come back in the
    order given, typed (isTyped() true).

    A parameter the method does not declare passes unchanged, for the
    provider to judge. Text that does not fit the declared type throws
    CIMException(CIM_ERR_INVALID_PARAMETER) naming the parameter.
*/
Pegasus::Array<Pegasus::CIMParamValue> typeInParameters(
    const Pegasus::CIMMethod& method, const Pegasus::Array<Pegasus::CIMParamValue>& inParameters);

/** Converts one text (or text array) value to the given type; throws
    CIMException(CIM_ERR_INVALID_PARAMETER) when it does not fit. */
Pegasus::CIMValue convertTextValue(const Pegasus::CIMValue& text, Pegasus::CIMType type,
                                   Pegasus::Boolean isArray, const Pegasus::String& what);

} // namespace cimom

#endif
