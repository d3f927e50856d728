// Whether a person is watching.
#pragma once

namespace kestrine {

enum class OutputStream { standardOutput = 1, standardError = 2 };

bool isTerminal(OutputStream stream);

} // namespace kestrine
