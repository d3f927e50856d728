// The number of processors.
#pragma once

namespace kestrine {

/// The number of processors that this process may run on, at least 1. Reads no file, so that it also works in
/// a process that may not open files.
unsigned processorCount();

} // namespace kestrine
