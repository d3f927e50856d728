// Resolves object specifiers to items and properties of the Finder.
#pragma once

#include "platform/carbon/AEObjects.h"
#include "platform/finder/Finder.h"

namespace kestrine {

/// A path as a byte string, or an error.
struct FoundObject {
    FoundObject(FinderError why) : error(std::move(why)) {}
    explicit FoundObject(std::string where) : path(std::move(where)) {}

    FinderOutcome error;
    std::string path;
};

/// The item of an alias, of an object of class 'alis' whose position is an alias (in any container, because
/// an alias is absolute), or of an object of class 'file' or 'cobj' whose name is a Finder path in the null
/// container. -1728 for anything else, and when the item does not exist.
FoundObject pathOfObject(const AEDesc& object);

/// A property and the object that has it.
struct FinderProperty {
    FourCharCode name;
    AEDesc owner;
};

/// nullopt when `object` is not a property.
std::optional<FinderProperty> propertyOf(const AEDesc& object);

} // namespace kestrine
