#include "platform/host/process/Terminal.h"

#include <unistd.h>

namespace kestrine {

bool isTerminal(OutputStream stream) { return ::isatty(static_cast<int>(stream)) == 1; }

} // namespace kestrine
