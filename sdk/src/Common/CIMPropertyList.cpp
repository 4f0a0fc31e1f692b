#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

CIMPropertyList::CIMPropertyList() : _isNull(true) {}

CIMPropertyList::CIMPropertyList(const CIMPropertyList& x) = default;

CIMPropertyList::CIMPropertyList(const Array<CIMName>& propertyNames) : _isNull(true)
{
    set(propertyNames);
}

CIMPropertyList::~CIMPropertyList() {}

CIMPropertyList& CIMPropertyList::operator=(const CIMPropertyList& x) = default;

void CIMPropertyList::set(const Array<CIMName>& propertyNames)
{
    // A null name would make a list that no property can match but that
    // looks like it names one.
    for (Uint32 i = 0; i < propertyNames.size(); i++)
    {
        if (propertyNames[i].isNull())
        {
            throw UninitializedObjectException();
        }
    }
    _names = propertyNames;
    _isNull = false;
}

void CIMPropertyList::clear()
{
    _names.clear();
    _isNull = true;
}

Boolean CIMPropertyList::isNull() const
{
    return _isNull;
}

Uint32 CIMPropertyList::size() const
{
    return _names.size();
}

const CIMName& CIMPropertyList::operator[](Uint32 index) const
{
    return _names[index];
}

Array<CIMName> CIMPropertyList::getPropertyNameArray() const
{
    return _names;
}

void CIMPropertyList::append(const Array<String>& propertyListArray)
{
    Array<CIMName> names = _names;
    for (Uint32 i = 0; i < propertyListArray.size(); i++)
    {
        names.append(CIMName(propertyListArray[i]));
    }
    _names = names;
    _isNull = false;
}

void CIMPropertyList::append(const CIMName& name)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    _names.append(name);
    _isNull = false;
}

Boolean CIMPropertyList::contains(const CIMName& name) const
{
    for (Uint32 i = 0; i < _names.size(); i++)
    {
        if (_names[i].equal(name))
        {
            return true;
        }
    }
    return false;
}

PEGASUS_NAMESPACE_END
