// ConvertContents: what `convert` says about files that hold more than one picture.
#pragma once

#include "platform/imageio/FileContents.h"

#include <optional>
#include <string>

namespace kestrine {

/// What the result of such a file leaves out; nullopt if it shows all.
std::optional<std::string> omissionIn(const FileContents& contents);

/// Why a replacing set does not replace such a file, and how it can be replaced.
std::string reasonNotToReplace(const FileContents& contents);

} // namespace kestrine
