// NSUserDefaults: where a domain of preferences lives on this system, and reading and writing it whole.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/foundation/propertylist/PropertyList.h"
#include "platform/host/process/Environment.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// A file that holds a domain or may hold it.
struct DomainFile {
    std::string path;
    bool isWritablePlace = false; ///< a place of the user's own, as against one for all users

    bool operator==(const DomainFile&) const = default;
};

class NSUserDefaults {
public:
    explicit NSUserDefaults(Environment environment) : environment_(std::move(environment)) {}

    /// `standardUserDefaults`: those of the user who runs this process.
    static NSUserDefaults standardUserDefaults() { return NSUserDefaults(Environment::ofProcess()); }

    /// `persistentDomainForName:`. Only the first file that exists is looked at, even when it is broken:
    /// notFound when there is none, else why the file cannot be read.
    Result<PropertyList> persistentDomainForName(const NSString& name) const;

    /// `setPersistentDomain:forName:`: replaces the user's own file, or makes it in the first place when
    /// there is none, with its folders. A file for all users is never touched: what was read from it and
    /// changed goes to the first place. notFound without a home folder, else what the system said.
    Result<void> setPersistentDomain(const PropertyList& domain, const NSString& name) const;

    /// The places of the domain, the most important first.
    std::vector<DomainFile> placesOfDomain(const NSString& name) const;

    /// The first place that a file exists at, or where the system would not tell; nothing when there is none.
    std::optional<DomainFile> fileOfDomain(const NSString& name) const;

private:
    Environment environment_;
};

} // namespace kestrine
