// LibraryReader: one run of the general JPEG library over one input.
#pragma once

#include "platform/imageio/jpeg/Input.h"

#include <initializer_list>
#include <optional>

namespace kestrine::jpeg {

/// A picture may be stored in many passes; more than this is an attempt to keep us busy.
inline constexpr int maximumScans = 500;

class LibraryReader {
public:
    explicit LibraryReader(std::shared_ptr<const ByteReader> reader);
    ~LibraryReader();
    LibraryReader(const LibraryReader&) = delete;
    LibraryReader& operator=(const LibraryReader&) = delete;

    /// Reads up to the first scan; `keptSegments` are the numbers of the APPn segments to keep.
    Result<void> readHeader(std::initializer_list<int> keptSegments = {});

    /// Why the pixels decoded so far had to be made up, if they had. To be asked once decompressing has
    /// begun.
    std::optional<Failure> damage();

    jpeg_decompress_struct info{};
    Errors errors{};

private:
    bool lacksScans();

    std::shared_ptr<const ByteReader> reader_;
    jpeg_progress_mgr progress_{};
    Input input_{};
    bool created_ = false;
};

} // namespace kestrine::jpeg
