// FallbackRows: the rows of a decoder that may give up in the middle, with another one ready to take its
// place.
#pragma once

#include "platform/coregraphics/RowSource.h"

#include <functional>

namespace kestrine {

using RowOpener = std::function<Result<RowSourcePointer>()>;

/// The rows of `first` as long as it has some. When it fails, `openSecond` starts the other decoder at the
/// top, the rows that were delivered already are skipped, and it goes on; whoever reads notices nothing, as
/// long as both give the same rows up to there.
RowSourcePointer rowsWithFallback(RowSourcePointer first, RowOpener openSecond);

} // namespace kestrine
