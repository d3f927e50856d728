// JPEGDecompressor: one run of the general JPEG library over one input.
#pragma once

#include "platform/imageio/JPEGInput.h"

#include <initializer_list>

namespace kestrine {

/// A picture may be stored in many passes; more than this is an attempt to keep us busy.
inline constexpr int maximumScans = 500;

class JPEGDecompressor {
public:
    explicit JPEGDecompressor(std::shared_ptr<const ByteReader> reader);
    ~JPEGDecompressor();
    JPEGDecompressor(const JPEGDecompressor&) = delete;
    JPEGDecompressor& operator=(const JPEGDecompressor&) = delete;

    /// Reads up to the first scan; `keptSegments` are the numbers of the APPn segments to keep.
    Result<void> readHeader(std::initializer_list<int> keptSegments = {});

    jpeg_decompress_struct info{};
    JPEGErrors errors{};

private:
    std::shared_ptr<const ByteReader> reader_;
    jpeg_progress_mgr progress_{};
    JPEGInput input_{};
    bool created_ = false;
};

} // namespace kestrine
