// The rows of a TIFF page as they are delivered.
#pragma once

#include "platform/imageio/tiff/Page.h"

#include <functional>

namespace kestrine::tiff {

/// Opens the file at a page; each call gives another File.
using FileOpener = std::function<Result<std::unique_ptr<File>>()>;

/// A large page is decoded by several threads, since its strips or tiles do not depend on each other.
/// `openFile` opens the file at `page`; it is not called after this function has returned.
Result<RowSourcePointer> rowsOfTIFF(const FileOpener& openFile, const std::shared_ptr<const Page>& page);

} // namespace kestrine::tiff
