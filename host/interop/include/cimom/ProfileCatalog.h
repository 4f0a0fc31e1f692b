#ifndef CIMOM_PROFILECATALOG_H
#define CIMOM_PROFILECATALOG_H

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>

#include <string>
#include <vector>

namespace cimom
{

/** A class whose instances conform to a profile, and where they live. */
struct ConformingClass
{
    Pegasus::CIMName className;
    Pegasus::CIMNamespaceName nameSpace;
};

/** One registered profile, as the interop namespace advertises it. */
struct ProfileRecord
{
    Pegasus::String instanceID; // "<organization>+<name>+<version>"
    Pegasus::Uint16 organization = 1;
    Pegasus::String organizationName;
    Pegasus::String name;
    Pegasus::String version;
    std::vector<ConformingClass> conformingClasses;
};

/** A profile that another references: the antecedent is the one listed in
    RegisteredProfiles, the dependent the one in DependentProfiles. */
struct ProfileReference
{
    Pegasus::String antecedentID;
    Pegasus::String dependentID;
};

/**
    The profiles that provider registration declares: PG_ProviderProfileCapabilities
    and PG_ProviderReferencedProfiles instances read against their class
    definitions, as OpenPegasus's interop provider reads them. No I/O; the
    problems of a malformed registration instance are reported, and that
    instance is left out.
*/
class ProfileCatalog
{
public:
    /** registration: every registration instance (PG_Provider and
        PG_ProviderCapabilities are consulted as well);
        profileCapabilitiesClass, referencedProfilesClass: the
        definitions whose ValueMap/Values map profile numbers to
        "Organization:Name"; registeredProfileClass: the definition whose
        RegisteredOrganization ValueMap/Values map organization names. */
    static ProfileCatalog build(const std::vector<Pegasus::CIMInstance>& registration,
                                const Pegasus::CIMClass& profileCapabilitiesClass,
                                const Pegasus::CIMClass& referencedProfilesClass,
                                const Pegasus::CIMClass& registeredProfileClass);

    static Pegasus::String makeInstanceID(const Pegasus::String& organization,
                                          const Pegasus::String& name,
                                          const Pegasus::String& version);

    const std::vector<ProfileRecord>& profiles() const
    {
        return _profiles;
    }
    const std::vector<ProfileReference>& references() const
    {
        return _references;
    }
    const std::vector<std::string>& problems() const
    {
        return _problems;
    }

    /** The profile with this InstanceID (case-sensitive), or null. */
    const ProfileRecord* find(const Pegasus::String& instanceID) const;

private:
    std::vector<ProfileRecord> _profiles;
    std::vector<ProfileReference> _references;
    std::vector<std::string> _problems;
};

} // namespace cimom

#endif
