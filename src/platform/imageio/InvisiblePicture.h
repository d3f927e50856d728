// Formats in which the alpha samples of opaque pictures may be unset: all of them are 0 then.
#pragma once

#include "platform/imageio/FallbackRows.h"

namespace kestrine {

/// The rows that `open` gives; each call must give the same rows, with alpha. If alpha is 0 in every pixel,
/// all pixels become opaque. To find out, the rows are read up to the first pixel with another alpha.
Result<RowSourcePointer> rowsOpaqueIfInvisible(const RowOpener& open);

} // namespace kestrine
