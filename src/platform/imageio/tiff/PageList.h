// PageList: which directories of a TIFF file are its pictures, and in which order.
#pragma once

#include "platform/imageio/tiff/Structure.h"

namespace kestrine::tiff {

/// A page, or a sub-page of one.
struct ListedPage {
    std::uint64_t directory = 0; ///< where it begins in the file
    std::uint64_t parent = 0;    ///< the directory of a sub-page's page; 0 for a page
    bool isCopy = false;         ///< reduced

    bool operator==(const ListedPage&) const = default;
};

/// Whether the directory describes what a camera's sensor recorded.
bool holdsSensorData(const Structure& file, const Structure::Directory& directory);

struct PageList {
    std::vector<ListedPage> pages; ///< empty if only sensor data remain, which would have to be developed
    bool holdsSensorData = false;  ///< it is a camera raw file
    bool lacksPages = false;       ///< further pages lie beyond the end of the file
};

/// The main picture first, then the other pages in stored order, then those that are reduced copies. The
/// main picture is the first page that is not marked as a reduced copy. A preview is never taken for
/// the picture:
///  - sub-pages are listed if their page is a copy or is smaller than they are: one of them is the picture;
///  - a picture smaller than the sensor's data in the same file is a preview, marked or not;
///  - only if a file contains nothing but copies, the largest of them is the picture.
/// Fails as Structure::pages(), but a chain that is broken after a picture only lacks pages.
Result<PageList> listPages(const Structure& file);

} // namespace kestrine::tiff
