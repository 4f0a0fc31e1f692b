#include <Pegasus/Common/CIMFlavor.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const Uint32 FLAVOR_NONE = 0;
const Uint32 FLAVOR_OVERRIDABLE = 1;
const Uint32 FLAVOR_TOSUBCLASS = 2;
const Uint32 FLAVOR_TOINSTANCE = 4;
const Uint32 FLAVOR_TRANSLATABLE = 8;
const Uint32 FLAVOR_DISABLEOVERRIDE = 16;
const Uint32 FLAVOR_RESTRICTED = 32;
} // namespace

const CIMFlavor CIMFlavor::NONE(FLAVOR_NONE);
const CIMFlavor CIMFlavor::OVERRIDABLE(FLAVOR_OVERRIDABLE);
const CIMFlavor CIMFlavor::ENABLEOVERRIDE(FLAVOR_OVERRIDABLE);
const CIMFlavor CIMFlavor::DISABLEOVERRIDE(FLAVOR_DISABLEOVERRIDE);
const CIMFlavor CIMFlavor::TOSUBCLASS(FLAVOR_TOSUBCLASS);
const CIMFlavor CIMFlavor::TOINSTANCE(FLAVOR_TOINSTANCE);
const CIMFlavor CIMFlavor::TRANSLATABLE(FLAVOR_TRANSLATABLE);
const CIMFlavor CIMFlavor::RESTRICTED(FLAVOR_RESTRICTED);
const CIMFlavor CIMFlavor::DEFAULTS(FLAVOR_OVERRIDABLE | FLAVOR_TOSUBCLASS);

CIMFlavor::CIMFlavor() : cimFlavor(FLAVOR_NONE)
{
}

CIMFlavor::CIMFlavor(const CIMFlavor& flavor) : cimFlavor(flavor.cimFlavor)
{
}

CIMFlavor::CIMFlavor(const Uint32 flavor) : cimFlavor(flavor)
{
}

CIMFlavor& CIMFlavor::operator=(const CIMFlavor& flavor)
{
    cimFlavor = flavor.cimFlavor;
    return *this;
}

void CIMFlavor::addFlavor(const CIMFlavor& flavor)
{
    cimFlavor |= flavor.cimFlavor;
}

void CIMFlavor::removeFlavor(const CIMFlavor& flavor)
{
    cimFlavor &= ~flavor.cimFlavor;
}

Boolean CIMFlavor::hasFlavor(const CIMFlavor& flavor) const
{
    return (cimFlavor & flavor.cimFlavor) == flavor.cimFlavor;
}

Boolean CIMFlavor::equal(const CIMFlavor& flavor) const
{
    return cimFlavor == flavor.cimFlavor;
}

CIMFlavor CIMFlavor::operator+(const CIMFlavor& flavor) const
{
    return CIMFlavor(cimFlavor | flavor.cimFlavor);
}

String CIMFlavor::toString() const
{
    static const struct
    {
        Uint32 bit;
        const char* word;
    } words[] = {{FLAVOR_OVERRIDABLE, "OVERRIDABLE"},       {FLAVOR_TOSUBCLASS, "TOSUBCLASS"},
                 {FLAVOR_TOINSTANCE, "TOINSTANCE"},         {FLAVOR_TRANSLATABLE, "TRANSLATABLE"},
                 {FLAVOR_DISABLEOVERRIDE, "DISABLEOVERRIDE"}, {FLAVOR_RESTRICTED, "RESTRICTED"}};
    String text;
    for (const auto& w : words)
    {
        if (cimFlavor & w.bit)
        {
            if (text.size())
            {
                text.append(" ");
            }
            text.append(w.word);
        }
    }
    return text;
}

PEGASUS_NAMESPACE_END
