// PictureFile: the file that a picture comes from, known by its path or open already.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/imageio/PictureEngine.h"

namespace kestrine {

/// Operations on a path read the file when they are called. Those of one job all read the one it opened, so
/// that a file that is replaced meanwhile does not mix with its successor.
struct PictureFile {
    PictureFile() = default;
    PictureFile(NSString name) : path(std::move(name)) {}
    PictureFile(const char16_t* name) : path(NSString(name)) {}
    PictureFile(std::nullopt_t) {}
    PictureFile(OptionalString name) : path(std::move(name)) {}
    PictureFile(NSString name, std::shared_ptr<Source> source)
        : path(std::move(name)), opened(std::move(source)) {}

    bool isNone() const { return opened == nullptr && (!path || path->isEmpty()); }

    OptionalString path;            ///< nil or "" for none
    std::shared_ptr<Source> opened; ///< null: operations open the file at the path
};

} // namespace kestrine
