// From object specifiers to the items and properties that the Finder knows by them.
#pragma once

#include "platform/carbon/AEObjects.h"
#include "platform/finder/Finder.h"

namespace kestrine {

/// A path in bytes, or the error.
struct FoundObject {
    FoundObject(FinderError why) : error(std::move(why)) {}
    explicit FoundObject(std::string where) : path(std::move(where)) {}

    FinderOutcome error;
    std::string path;
};

/// The item that is meant by an alias, by an object of class 'alis' whose position is an alias (wherever it
/// is said to be: an alias knows its place), or by an object of class 'file' or 'cobj' whose name is a Finder
/// path in the null container. Error -1728 for anything else, and when the item does not exist.
FoundObject pathOfObject(const AEDesc& object);

/// A property and the object that has it.
struct FinderProperty {
    FourCharCode name;
    AEDesc owner;
};

/// Nothing when `object` does not specify a property.
std::optional<FinderProperty> propertyOf(const AEDesc& object);

} // namespace kestrine
