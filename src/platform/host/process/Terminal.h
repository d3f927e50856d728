// Whether an output stream is a terminal.
#pragma once

namespace kestrine {

enum class OutputStream { standardOutput = 1, standardError = 2 };

/// Whether output to the stream appears on a terminal.
bool isTerminal(OutputStream stream);

} // namespace kestrine
