#ifndef Pegasus_ParamValue_h
#define Pegasus_ParamValue_h

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

struct CIMParamValueRep;

// A named method parameter value. A handle: copies share one
// representation; clone() makes an independent one. Using a
// default-constructed handle throws UninitializedObjectException.
class PEGASUS_COMMON_LINKAGE CIMParamValue
{
public:
    CIMParamValue();
    CIMParamValue(const CIMParamValue& x);
    CIMParamValue(String parameterName, CIMValue value, Boolean isTyped = true);
    ~CIMParamValue();

    CIMParamValue& operator=(const CIMParamValue& x);

    String getParameterName() const;
    CIMValue getValue() const;
    Boolean isTyped() const;
    void setParameterName(String& parameterName);
    void setValue(CIMValue& value);
    void setIsTyped(Boolean isTyped = true);
    Boolean isUninitialized() const;
    CIMParamValue clone() const;

private:
    CIMParamValueRep& _checked() const;
    std::shared_ptr<CIMParamValueRep> _rep;
};

PEGASUS_NAMESPACE_END

#endif
