// The exception of an action, as a string for comparison.
#pragma once

#include "platform/foundation/NSException.h"

namespace kestrine::testing {

/// The exception's name, or "nothing".
template <class Action>
std::string raisedName(Action action) {
    try {
        action();
    } catch (const NSException& exception) {
        return exception.name();
    }
    return "nothing";
}

} // namespace kestrine::testing
