#include "kestrinectl/Version.h"

namespace kestrine {

const char* programVersion() { return KESTRINE_VERSION; }

} // namespace kestrine
