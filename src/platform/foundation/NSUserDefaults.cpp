#include "platform/foundation/NSUserDefaults.h"

#include "platform/foundation/propertylist/PropertyListBounds.h"
#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"

namespace kestrine {

std::vector<DomainFile> NSUserDefaults::placesOfDomain(const NSString& name) const {
    const std::string fileName = name.utf8() + ".plist";
    std::vector<DomainFile> places;
    const auto add = [&](const std::string& folder, bool isWritablePlace) {
        places.push_back({joinedPath(folder, fileName), isWritablePlace});
    };
    if (const std::string configHome = environment_.xdgConfigHome(); !configHome.empty())
        add(configHome, true);
    if (const std::string home = environment_.homeFolder(); !home.empty())
        add(joinedPath(home, "Library/Preferences"), true);
    for (const std::string& folder : environment_.xdgConfigDirs())
        add(folder, false);
    return places;
}

std::optional<DomainFile> NSUserDefaults::fileOfDomain(const NSString& name) const {
    for (const DomainFile& place : placesOfDomain(name))
        if (!isAbsent(place.path))
            return place;
    return std::nullopt;
}

Result<PropertyList> NSUserDefaults::persistentDomainForName(const NSString& name) const {
    const std::optional<DomainFile> file = fileOfDomain(name);
    if (!file)
        return Failure{Reason::notFound, "there is no preferences file of " + name.utf8()};
    return PropertyList::fromBytes(TRY(readSmallFile(file->path, largestPropertyList)));
}

Result<void> NSUserDefaults::setPersistentDomain(const PropertyList& domain, const NSString& name) const {
    std::optional<DomainFile> file = fileOfDomain(name);
    if (!file || !file->isWritablePlace)
        file = placesOfDomain(name).front();
    if (!file->isWritablePlace)
        return Failure{Reason::notFound, "there is no home folder to keep preferences in"};
    return replaceFile(file->path, domain.toBytes());
}

} // namespace kestrine
