#include "kestrinectl/convert/ConvertResult.h"

#include <algorithm>

namespace kestrine {

/// Sets often fail for the same reason, so one line reports it.
void ConvertResult::complain(const std::string& text, std::string_view kind) {
    status = ConvertStatus::failed;
    if (std::ranges::find(complaints, text, &ConvertComplaint::text) == complaints.end())
        complaints.push_back({text, kind});
}

void ConvertResult::warn(const std::string& text) {
    if (std::ranges::find(warnings, text) == warnings.end())
        warnings.push_back(text);
}

} // namespace kestrine
