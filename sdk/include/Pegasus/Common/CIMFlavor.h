#ifndef Pegasus_CIMFlavor_h
#define Pegasus_CIMFlavor_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// A set of qualifier flavors, kept as bits so flavors combine with + and addFlavor().
class PEGASUS_COMMON_LINKAGE CIMFlavor
{
public:
    CIMFlavor();
    CIMFlavor(const CIMFlavor& flavor);
    CIMFlavor& operator=(const CIMFlavor& flavor);

    void addFlavor(const CIMFlavor& flavor);
    void removeFlavor(const CIMFlavor& flavor);
    Boolean hasFlavor(const CIMFlavor& flavor) const;
    Boolean equal(const CIMFlavor& flavor) const;
    CIMFlavor operator+(const CIMFlavor& flavor) const;
    String toString() const;

    static const CIMFlavor NONE;
    static const CIMFlavor OVERRIDABLE;
    static const CIMFlavor ENABLEOVERRIDE;
    static const CIMFlavor DISABLEOVERRIDE;
    static const CIMFlavor TOSUBCLASS;
    static const CIMFlavor TOINSTANCE;
    static const CIMFlavor TRANSLATABLE;
    static const CIMFlavor RESTRICTED;
    static const CIMFlavor DEFAULTS;

private:
    CIMFlavor(const Uint32 flavor);

    Uint32 cimFlavor;
};

PEGASUS_NAMESPACE_END

#endif
