// The preparation of a process before it opens its first file.
#pragma once

namespace kestrine {

/// To be called first in main. Opens /dev/null for each standard stream that is closed, since otherwise the
/// next opened file could become standard output. Reading from such a stream or writing to it still fails.
/// Ignores SIGPIPE and SIGXFSZ, so that writing to a closed pipe or above a size limit is an error of that
/// write and does not end the process.
void prepareStandardStreams();

} // namespace kestrine
