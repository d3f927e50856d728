// NSUserDefaults: finds, reads and writes domains of preferences. Each domain is one property list file.
#pragma once

#include "platform/foundation/propertylist/PropertyList.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/process/Environment.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// A possible file of a domain.
struct DomainFile {
    std::string path;
    bool isWritablePlace = false; ///< whether the file belongs to the user, not to all users

    bool operator==(const DomainFile&) const = default;
};

class NSUserDefaults {
public:
    explicit NSUserDefaults(Environment environment) : environment_(std::move(environment)) {}

    /// `standardUserDefaults`: the preferences of the user who runs this process.
    static NSUserDefaults standardUserDefaults() { return NSUserDefaults(Environment::ofProcess()); }

    /// `persistentDomainForName:`: reads the first file that exists and ignores the others, even if the first
    /// one is malformed. Fails with notFound if no file exists, otherwise with the reason why the file cannot
    /// be read.
    Result<PropertyList> persistentDomainForName(const NSString& name) const;

    /// `setPersistentDomain:forName:`: replaces the user's file. If the domain has no file, or only one for
    /// all users, the new file is created in the first place of placesOfDomain(), together with its folders.
    /// A file for all users is never changed. Fails with notFound if there is no home folder, otherwise with
    /// the system's error.
    Result<void> setPersistentDomain(const PropertyList& domain, const NSString& name) const;

    /// All possible files of the domain, in the order in which they are looked up.
    std::vector<DomainFile> placesOfDomain(const NSString& name) const;

    /// The first file that exists, or whose existence the system does not report. Empty if there is none.
    std::optional<DomainFile> fileOfDomain(const NSString& name) const;

private:
    Environment environment_;
};

} // namespace kestrine
