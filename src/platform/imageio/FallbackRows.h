// FallbackRows: the rows of a decoder that may give up in the middle; a second decoder then replaces it.
#pragma once

#include "platform/coregraphics/RowSource.h"

#include <functional>

namespace kestrine {

using RowOpener = std::function<Result<RowSourcePointer>()>;

/// The rows of `first` until it fails. Then `openSecond` starts the second decoder at the top, which skips
/// the rows that were already delivered and continues. Both must give the same rows up to the failure.
RowSourcePointer rowsWithFallback(RowSourcePointer first, RowOpener openSecond);

} // namespace kestrine
