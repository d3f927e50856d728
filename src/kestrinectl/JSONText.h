// Texts and bytes in JSON: what is no valid text stands there as {"bytes": "hex"}.
#pragma once

#include "platform/host/Bytes.h"

#include <nlohmann/json.hpp>
#include <optional>

namespace kestrine {

nlohmann::ordered_json textToJSON(const std::string& bytes);
nlohmann::ordered_json bytesToJSON(ByteView bytes);

/// The way back from textToJSON(); nothing for anything that it would not give.
std::optional<std::string> textFromJSON(const nlohmann::json& value);

} // namespace kestrine
