// The text that describes an event's parameters, read into a record.
// The reader is narrow on purpose: it knows the forms that AEBuildAppleEvent() lists and nothing else.
#pragma once

#include "platform/carbon/AEBuild.h"

#include <span>
#include <string_view>

namespace kestrine {

struct ParameterTextOutcome {
    OSStatus status =
        noErr; ///< -10206 with `error`, -50 for a wrong number of descriptors, or that of a field
    AEBuildError error;
    AERecord parameters{typeAERecord, nullptr}; ///< what was read before a failure stays in it
};

/// Records may be nested 16 deep.
ParameterTextOutcome readParameterText(std::string_view text, std::span<const AEDesc* const> descriptors);

} // namespace kestrine
