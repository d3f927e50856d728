// Strings and bytes in JSON: what is not valid UTF-8 is written as {"bytes": "hex"}.
#pragma once

#include "platform/host/Bytes.h"

#include <nlohmann/json.hpp>
#include <optional>

namespace kestrine {

nlohmann::ordered_json textToJSON(const std::string& bytes);
nlohmann::ordered_json bytesToJSON(ByteView bytes);

/// The inverse of textToJSON(); nullopt for a value that it would not return.
std::optional<std::string> textFromJSON(const nlohmann::json& value);

/// The same, but throws json::exception instead of returning nullopt.
std::string textIn(const nlohmann::json& value);

} // namespace kestrine
