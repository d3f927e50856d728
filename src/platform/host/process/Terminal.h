// Whether a person is watching an output stream.
#pragma once

namespace kestrine {

enum class OutputStream { standardOutput = 1, standardError = 2 };

/// Whether what is written to the stream appears on a terminal.
bool isTerminal(OutputStream stream);

} // namespace kestrine
