// Parses the string that describes an event's parameters. It accepts only the syntax in AEBuild.h.
#pragma once

#include "platform/carbon/AEBuild.h"

#include <span>
#include <string_view>

namespace kestrine {

struct ParameterTextOutcome {
    /// -10206 for a syntax error, -50 for a wrong number of descriptors, or the status of putField().
    OSStatus status = noErr;
    AEBuildError error;
    AERecord parameters{typeAERecord, nullptr}; ///< after a failure the parameters before it
};

/// Records can be nested up to 16 levels.
ParameterTextOutcome readParameterText(std::string_view text, std::span<const AEDesc* const> descriptors);

} // namespace kestrine
