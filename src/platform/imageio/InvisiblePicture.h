// Formats in which the alpha samples of opaque pictures may be unset: all of them are 0 then.
#pragma once

#include "platform/imageio/FallbackRows.h"

namespace kestrine {

/// Whether alpha is 0 in every pixel of the rows that `open` gives. The rows are read up to the first pixel
/// with another alpha.
Result<bool> isInvisible(const RowOpener& open);

/// The rows that `open` gives; each call must give the same rows, with alpha. If alpha is 0 in every pixel,
/// all pixels become opaque.
Result<RowSourcePointer> rowsOpaqueIfInvisible(const RowOpener& open);

} // namespace kestrine
