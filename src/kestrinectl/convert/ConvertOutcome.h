// ConvertOutcome: what users are told about the results of one file.
#pragma once

#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ConvertResult.h"
#include "models/ResizeJob.h"

namespace kestrine {

/// Adds the outcome of one recipe for `input`, the source of `result`.
void addOutcome(ConvertResult& result, const ConvertInput& input, const ConversionRecipe& recipe,
                const JobOutcome& outcome);

/// The warning that a name from --name has the extension of another format than the result, so that programs
/// would take the file for that format; nullopt for other names.
std::optional<std::string> misleadingName(const ConversionRecipe& recipe, const ConvertOutput& output);

/// Why a file that holds more than one picture is not replaced.
ConvertComplaint complaintOfMore(const FileContents& contents);

/// Why a file that fits already is skipped.
inline constexpr const char* reasonOfFitting = "it already has the requested size and format";

/// The name of the preset that gave the recipe.
std::optional<std::string> setOf(const ConversionRecipe& recipe);

} // namespace kestrine
