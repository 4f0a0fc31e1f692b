#ifndef Pegasus_CIMPropertyList_h
#define Pegasus_CIMPropertyList_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

// A property filter. A null list (the default) means "all properties"; an
// empty one means "none".
class PEGASUS_COMMON_LINKAGE CIMPropertyList
{
public:
    CIMPropertyList();
    CIMPropertyList(const CIMPropertyList& x);
    CIMPropertyList(const Array<CIMName>& propertyNames);
    ~CIMPropertyList();

    CIMPropertyList& operator=(const CIMPropertyList& x);

    // Makes the list non-null with these names.
    void set(const Array<CIMName>& propertyNames);
    // Makes the list null again.
    void clear();
    Boolean isNull() const;
    Uint32 size() const;
    const CIMName& operator[](Uint32 index) const;
    Array<CIMName> getPropertyNameArray() const;
    // Appends the names (making the list non-null); throws
    // InvalidNameException for an illegal name.
    void append(const Array<String>& propertyListArray);
    void append(const CIMName& name);
    // Whether the name is listed (ignoring case); false for a null list.
    Boolean contains(const CIMName& name) const;

private:
    Boolean _isNull;
    Array<CIMName> _names;
};

PEGASUS_NAMESPACE_END

#endif
