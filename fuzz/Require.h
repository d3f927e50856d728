// require: what a fuzzer claims about the parser that it feeds.
#pragma once

#include <cstdlib>

namespace kestrine::fuzzing {

/// Ends the program, as the fuzzing engine expects of a finding, unless the claim holds.
inline void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace kestrine::fuzzing
