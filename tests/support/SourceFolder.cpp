#include "tests/support/SourceFolder.h"

namespace kestrine {

std::string inSourceFolder(const std::string& path) { return KESTRINE_SOURCE_FOLDER "/" + path; }

} // namespace kestrine
