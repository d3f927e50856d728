// A second descriptor of an open file.
#pragma once

#include "platform/host/files/FileDescriptor.h"

namespace kestrine {

/// Another descriptor of the same open file, which programs that this process starts do not get. `number`
/// stays open.
Result<FileDescriptor> duplicated(int number);

} // namespace kestrine
