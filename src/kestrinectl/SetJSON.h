// Sets as JSON, for export and import: an object with the field names of ResizeSet.
#pragma once

#include "models/ResizeSet.h"

#include <nlohmann/json.hpp>

namespace kestrine {

/// Every archived field. Numbers as such; the enumerations by name ("jpeg", "maxSize") where they have one; a
/// boolean as true or false unless another byte is stored; a name that is no valid text as {"bytes": "hex"};
/// numbers that JSON cannot hold as "nan", "inf" or "-inf".
nlohmann::ordered_json toJSON(const ResizeSet& set);

/// The set that `json` describes; fields that are missing keep their defaults. Throws CommandError for
/// anything that toJSON() would not write; `where` says in the message which set it was.
std::shared_ptr<const ResizeSet> setFromJSON(const nlohmann::json& json, const std::string& where);

} // namespace kestrine
