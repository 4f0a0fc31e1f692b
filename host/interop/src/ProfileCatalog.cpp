#include <cimom/ProfileCatalog.h>

#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMValue.h>

#include <algorithm>
#include <set>
#include <string>

PEGASUS_USING_PEGASUS;

namespace cimom
{

namespace
{

const CIMName PROVIDER_CLASS("PG_Provider");
const CIMName CAPABILITIES_CLASS("PG_ProviderCapabilities");
const CIMName PROFILE_CAPABILITIES_CLASS("PG_ProviderProfileCapabilities");
const CIMName REFERENCED_PROFILES_CLASS("PG_ProviderReferencedProfiles");
const CIMName VALUE_MAP("ValueMap");
const CIMName VALUES("Values");
const Uint16 OTHER = 0;
const Uint16 OTHER_ORGANIZATION = 1;

std::string text(const String& s)
{
    return std::string((const char*)s.getCString());
}

std::string lowerKey(const String& a, const String& b)
{
    String key = a + "/" + b;
    key.toLower();
    return text(key);
}

// The value of a property, or a null value when the instance lacks it.
CIMValue valueOf(const CIMInstance& instance, const char* name)
{
    Uint32 pos = instance.findProperty(CIMName(name));
    return pos == PEG_NOT_FOUND ? CIMValue() : instance.getProperty(pos).getValue();
}

bool readString(const CIMInstance& instance, const char* name, String& out)
{
    CIMValue value = valueOf(instance, name);
    if (value.isNull() || value.isArray() || value.getType() != CIMTYPE_STRING)
    {
        return false;
    }
    value.get(out);
    return out.size() != 0;
}

bool readUint16(const CIMInstance& instance, const char* name, Uint16& out)
{
    CIMValue value = valueOf(instance, name);
    if (value.isNull() || value.isArray() || value.getType() != CIMTYPE_UINT16)
    {
        return false;
    }
    value.get(out);
    return true;
}

// Absent or null arrays read as empty: that is how MOF writes "none".
template <class T> Array<T> readArray(const CIMInstance& instance, const char* name, CIMType type)
{
    Array<T> result;
    CIMValue value = valueOf(instance, name);
    if (!value.isNull() && value.isArray() && value.getType() == type)
    {
        value.get(result);
    }
    return result;
}

// Maps one entry of a property's `from` qualifier to the entry at the same
// index of its `to` qualifier (ValueMap to Values or back); empty when
// either is missing or the entry is not there.
String translate(const CIMClass& cls, const char* property, const String& entry,
                 const CIMName& from, const CIMName& to)
{
    Uint32 pos = cls.findProperty(CIMName(property));
    if (pos == PEG_NOT_FOUND)
    {
        return String();
    }
    CIMConstProperty prop = cls.getProperty(pos);
    Uint32 fromPos = prop.findQualifier(from);
    Uint32 toPos = prop.findQualifier(to);
    if (fromPos == PEG_NOT_FOUND || toPos == PEG_NOT_FOUND)
    {
        return String();
    }
    Array<String> fromValues, toValues;
    prop.getQualifier(fromPos).getValue().get(fromValues);
    prop.getQualifier(toPos).getValue().get(toValues);
    for (Uint32 i = 0; i < fromValues.size() && i < toValues.size(); i++)
    {
        if (fromValues[i] == entry)
        {
            return toValues[i];
        }
    }
    return String();
}

String numberText(Uint16 number)
{
    return CIMValue(number).toString();
}

struct Capability
{
    String moduleName;
    String providerName;
    CIMName className;
    Array<String> namespaces;
};

class Reader
{
public:
    Reader(const CIMClass& profileCapabilitiesClass, const CIMClass& referencedProfilesClass,
           const CIMClass& registeredProfileClass, std::vector<std::string>& problems)
        : _profileCaps(profileCapabilitiesClass), _referenced(referencedProfilesClass),
          _registered(registeredProfileClass), _problems(problems)
    {
    }

    // A profile named by its number in `property`, or, for 0 (Other), by the
    // next entries of the Other name and organization lists.
    bool profileName(const CIMClass& cls, const char* property, Uint16 number,
                     const Array<String>& otherNames, const Array<String>& otherOrgs,
                     Uint32& otherIndex, String& organization, String& name,
                     const std::string& where)
    {
        if (number == OTHER)
        {
            if (otherIndex >= otherNames.size() || otherIndex >= otherOrgs.size())
            {
                _problems.push_back(where + ": not enough entries for the profiles that are " +
                                    "0 (Other) in " + property);
                return false;
            }
            name = otherNames[otherIndex];
            organization = otherOrgs[otherIndex];
            otherIndex++;
            return true;
        }
        String mapped = translate(cls, property, numberText(number), VALUE_MAP, VALUES);
        Uint32 colon = mapped.find(':');
        if (mapped.size() == 0 || colon == PEG_NOT_FOUND)
        {
            _problems.push_back(where + ": " + property + " " + text(numberText(number)) +
                                " names no known profile");
            return false;
        }
        organization = mapped.subString(0, colon);
        name = mapped.subString(colon + 1);
        return true;
    }

    Uint16 organizationNumber(const String& organization)
    {
        String number =
            translate(_registered, "RegisteredOrganization", organization, VALUES, VALUE_MAP);
        if (number.size() == 0)
        {
            return OTHER_ORGANIZATION;
        }
        return static_cast<Uint16>(std::stoi(text(number)));
    }

    const CIMClass& _profileCaps;
    const CIMClass& _referenced;
    const CIMClass& _registered;
    std::vector<std::string>& _problems;
};

std::string describe(const CIMInstance& instance)
{
    String module, provider, id;
    readString(instance, "ProviderModuleName", module);
    readString(instance, "ProviderName", provider);
    readString(instance, "CapabilityID", id);
    return text(instance.getClassName().getString()) + " " + text(module) + "/" + text(provider) +
           "/" + text(id);
}

} // namespace

String ProfileCatalog::makeInstanceID(const String& organization, const String& name,
                                      const String& version)
{
    return organization + "+" + name + "+" + version;
}

const ProfileRecord* ProfileCatalog::find(const String& instanceID) const
{
    for (const ProfileRecord& profile : _profiles)
    {
        if (profile.instanceID == instanceID)
        {
            return &profile;
        }
    }
    return nullptr;
}

ProfileCatalog ProfileCatalog::build(const std::vector<CIMInstance>& registration,
                                     const CIMClass& profileCapabilitiesClass,
                                     const CIMClass& referencedProfilesClass,
                                     const CIMClass& registeredProfileClass)
{
    ProfileCatalog catalog;
    Reader reader(profileCapabilitiesClass, referencedProfilesClass, registeredProfileClass,
                  catalog._problems);

    std::set<std::string> providers;
    std::vector<Capability> capabilities;
    for (const CIMInstance& instance : registration)
    {
        String module, provider, className;
        if (instance.getClassName().equal(PROVIDER_CLASS) &&
            readString(instance, "ProviderModuleName", module) &&
            readString(instance, "Name", provider))
        {
            providers.insert(lowerKey(module, provider));
        }
        else if (instance.getClassName().equal(CAPABILITIES_CLASS) &&
                 readString(instance, "ProviderModuleName", module) &&
                 readString(instance, "ProviderName", provider) &&
                 readString(instance, "ClassName", className) && CIMName::legal(className))
        {
            capabilities.push_back(
                Capability{module, provider, CIMName(className),
                           readArray<String>(instance, "Namespaces", CIMTYPE_STRING)});
        }
    }

    for (const CIMInstance& instance : registration)
    {
        if (!instance.getClassName().equal(PROFILE_CAPABILITIES_CLASS))
        {
            continue;
        }
        const std::string where = describe(instance);
        String module, provider;
        if (!readString(instance, "ProviderModuleName", module) ||
            !readString(instance, "ProviderName", provider))
        {
            catalog._problems.push_back(where + ": no ProviderModuleName or ProviderName");
            continue;
        }
        // As OpenPegasus does, a profile is advertised only while its
        // provider is registered.
        if (!providers.count(lowerKey(module, provider)))
        {
            catalog._problems.push_back(where + ": provider " + text(provider) + " of module " +
                                        text(module) + " is not registered");
            continue;
        }
        Uint16 number = 0;
        if (!readUint16(instance, "RegisteredProfile", number))
        {
            catalog._problems.push_back(where + ": no RegisteredProfile");
            continue;
        }
        Array<String> otherName, otherOrg;
        String name, organization, version;
        readString(instance, "OtherRegisteredProfile", name);
        readString(instance, "OtherProfileOrganization", organization);
        if (name.size() != 0)
        {
            otherName.append(name);
        }
        if (organization.size() != 0)
        {
            otherOrg.append(organization);
        }
        Uint32 otherIndex = 0;
        if (!reader.profileName(profileCapabilitiesClass, "RegisteredProfile", number, otherName,
                                otherOrg, otherIndex, organization, name, where))
        {
            continue;
        }
        if (!readString(instance, "ProfileVersion", version))
        {
            catalog._problems.push_back(where + ": no ProfileVersion");
            continue;
        }

        ProfileRecord record;
        record.organizationName = organization;
        record.organization = reader.organizationNumber(organization);
        record.name = name;
        record.version = version;
        record.instanceID = makeInstanceID(organization, name, version);

        bool complete = true;
        Array<String> elements = readArray<String>(instance, "ConformingElements", CIMTYPE_STRING);
        for (Uint32 e = 0; e < elements.size(); e++)
        {
            // The namespaces are those where this same provider serves the class.
            bool found = false;
            for (const Capability& cap : capabilities)
            {
                if (lowerKey(cap.moduleName, cap.providerName) != lowerKey(module, provider) ||
                    !String::equalNoCase(cap.className.getString(), elements[e]))
                {
                    continue;
                }
                found = true;
                for (Uint32 n = 0; n < cap.namespaces.size(); n++)
                {
                    record.conformingClasses.push_back(
                        ConformingClass{cap.className, CIMNamespaceName(cap.namespaces[n])});
                }
            }
            if (!found)
            {
                catalog._problems.push_back(where + ": conforming element " + text(elements[e]) +
                                            " is not a class that provider " + text(provider) +
                                            " serves");
                complete = false;
            }
        }
        if (!complete)
        {
            continue;
        }

        auto existing =
            std::find_if(catalog._profiles.begin(), catalog._profiles.end(),
                         [&](const ProfileRecord& p) { return p.instanceID == record.instanceID; });
        if (existing == catalog._profiles.end())
        {
            catalog._profiles.push_back(record);
        }
        else
        {
            existing->conformingClasses.insert(existing->conformingClasses.end(),
                                               record.conformingClasses.begin(),
                                               record.conformingClasses.end());
        }
    }

    for (const CIMInstance& instance : registration)
    {
        if (!instance.getClassName().equal(REFERENCED_PROFILES_CLASS))
        {
            continue;
        }
        const std::string where = describe(instance);
        Array<Uint16> antecedents =
            readArray<Uint16>(instance, "RegisteredProfiles", CIMTYPE_UINT16);
        Array<Uint16> dependents = readArray<Uint16>(instance, "DependentProfiles", CIMTYPE_UINT16);
        Array<String> antecedentVersions =
            readArray<String>(instance, "RegisteredProfileVersions", CIMTYPE_STRING);
        Array<String> dependentVersions =
            readArray<String>(instance, "DependentProfileVersions", CIMTYPE_STRING);
        if (antecedents.size() == 0 || dependents.size() != antecedents.size() ||
            antecedentVersions.size() != antecedents.size() ||
            dependentVersions.size() != antecedents.size())
        {
            catalog._problems.push_back(where + ": RegisteredProfiles, DependentProfiles and "
                                                "their versions must have one entry each per pair");
            continue;
        }
        Array<String> otherAntecedents =
            readArray<String>(instance, "OtherRegisteredProfiles", CIMTYPE_STRING);
        Array<String> otherAntecedentOrgs =
            readArray<String>(instance, "OtherRegisteredProfileOrganizations", CIMTYPE_STRING);
        Array<String> otherDependents =
            readArray<String>(instance, "OtherDependentProfiles", CIMTYPE_STRING);
        Array<String> otherDependentOrgs =
            readArray<String>(instance, "OtherDependentProfileOrganizations", CIMTYPE_STRING);
        Uint32 nextAntecedent = 0, nextDependent = 0;
        for (Uint32 i = 0; i < antecedents.size(); i++)
        {
            String aOrg, aName, dOrg, dName;
            if (!reader.profileName(referencedProfilesClass, "RegisteredProfiles", antecedents[i],
                                    otherAntecedents, otherAntecedentOrgs, nextAntecedent, aOrg,
                                    aName, where) ||
                !reader.profileName(referencedProfilesClass, "DependentProfiles", dependents[i],
                                    otherDependents, otherDependentOrgs, nextDependent, dOrg, dName,
                                    where))
            {
                break;
            }
            ProfileReference reference{makeInstanceID(aOrg, aName, antecedentVersions[i]),
                                       makeInstanceID(dOrg, dName, dependentVersions[i])};
            bool duplicate = false;
            for (const ProfileReference& known : catalog._references)
            {
                duplicate = duplicate || (known.antecedentID == reference.antecedentID &&
                                          known.dependentID == reference.dependentID);
            }
            if (!duplicate)
            {
                catalog._references.push_back(reference);
            }
        }
    }
    return catalog;
}

} // namespace cimom
