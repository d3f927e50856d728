// PlannedTreatment: the sets and options of a plan, as JSON in its header, so that its runs need no
// preferences.
#pragma once

#include "kestrinectl/convert/ConvertTreatment.h"

namespace kestrine {

struct PlannedTreatment {
    ConvertTreatment treatment;
    ConversionRecipes recipes; ///< their places are ignored: the plan has the names of all results
};

/// {"sets": [...], "options": ["--longest=1200", ...]}: the sets, and the options of ConvertTreatment that
/// were given to `command`, except those that choose sets.
std::string treatmentAsText(const CLI::App& command, const ResizeSets& sets);

/// The inverse. Throws CommandError for anything that treatmentAsText() would not return, and for what cannot
/// be planned. `plan` is the name of the plan, for messages.
PlannedTreatment treatmentFromText(const std::string& text, const std::string& plan);

} // namespace kestrine
