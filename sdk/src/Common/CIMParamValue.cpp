#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

struct CIMParamValueRep
{
    String parameterName;
    CIMValue value;
    Boolean isTyped;
};

CIMParamValue::CIMParamValue() {}

CIMParamValue::CIMParamValue(const CIMParamValue& x) = default;

CIMParamValue::CIMParamValue(String parameterName, CIMValue value, Boolean isTyped)
    : _rep(std::make_shared<CIMParamValueRep>())
{
    _rep->parameterName = parameterName;
    _rep->value = value;
    _rep->isTyped = isTyped;
}

CIMParamValue::~CIMParamValue() {}

CIMParamValue& CIMParamValue::operator=(const CIMParamValue& x) = default;

CIMParamValueRep& CIMParamValue::_checked() const
{
    if (!_rep)
    {
        throw UninitializedObjectException();
    }
    return *_rep;
}

String CIMParamValue::getParameterName() const
{
    return _checked().parameterName;
}

CIMValue CIMParamValue::getValue() const
{
    return _checked().value;
}

Boolean CIMParamValue::isTyped() const
{
    return _checked().isTyped;
}

void CIMParamValue::setParameterName(String& parameterName)
{
    _checked().parameterName = parameterName;
}

void CIMParamValue::setValue(CIMValue& value)
{
    _checked().value = value;
}

void CIMParamValue::setIsTyped(Boolean isTyped)
{
    _checked().isTyped = isTyped;
}

Boolean CIMParamValue::isUninitialized() const
{
    return !_rep;
}

CIMParamValue CIMParamValue::clone() const
{
    // Values never share embedded objects with anyone, so copying the value
    // is already a deep copy.
    const CIMParamValueRep& rep = _checked();
    return CIMParamValue(rep.parameterName, rep.value, rep.isTyped);
}

PEGASUS_NAMESPACE_END
