#include "kestrinectl/convert/SeenPlaces.h"

#include "kestrinectl/GivenPaths.h"

namespace kestrine {

bool SeenPlaces::add(const std::filesystem::path& file) {
    const std::filesystem::path folder = absolutePath(file).parent_path();
    const auto [known, isNew] = folders_.try_emplace(folder.native());
    if (isNew)
        known->second = &names_[canonicalPath(folder).native()];
    return known->second->insert(file.filename().native()).second;
}

} // namespace kestrine
