// The state that a process must be in before it opens its first file.
#pragma once

namespace kestrine {

/// To be called first in main. A standard stream that is closed becomes one that reads nothing and
/// swallows everything (else the next file opened would be the standard output); and writing to a closed
/// pipe or beyond a size limit becomes an error of that write instead of the end of the process.
void prepareStandardStreams();

/// The descriptors of the streams that people read.
inline constexpr int standardOutput = 1;
inline constexpr int standardError = 2;

/// Whether what is written to the descriptor appears on a terminal.
bool isTerminal(int descriptor);

} // namespace kestrine
