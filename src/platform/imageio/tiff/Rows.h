// The rows of a TIFF page as they are delivered.
#pragma once

#include "platform/imageio/tiff/Page.h"

namespace kestrine::tiff {

/// A large page is decoded by several threads, since its strips or tiles do not depend on each other.
Result<RowSourcePointer> rowsOfTIFF(const Input& input, const std::shared_ptr<const Page>& page);

} // namespace kestrine::tiff
