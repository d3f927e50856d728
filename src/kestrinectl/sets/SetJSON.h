// Sets as JSON, for export and import: one object per set, with the field names of ResizeSet.
#pragma once

#include "models/ResizeSet.h"

#include <nlohmann/json.hpp>

namespace kestrine {

/// Every archived field. Enumerations by name ("jpeg", "maxSize") where the value has one; booleans as true
/// or false, or as a number when another byte is stored; a name that is not valid UTF-8 as {"bytes": "hex"};
/// numbers that JSON cannot hold as "nan", "inf" or "-inf".
nlohmann::ordered_json toJSON(const ResizeSet& set);

/// The set that `json` describes; missing fields have their defaults. Throws CommandError for anything that
/// toJSON() would not write; `where` begins the message.
std::shared_ptr<ResizeSet> setFromJSON(const nlohmann::json& json, const std::string& where);

} // namespace kestrine
