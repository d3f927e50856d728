// IdleDecoders: decoders that keep their tables and buffers for the next file, on any thread. So a small file
// costs no more than its bytes, and a thread that converts many files works on memory that is in its cache.
#pragma once

#include "platform/imageio/jpeg/own/PlaneDecoder.h"

#include <memory>

namespace kestrine::jpeg {

/// A decoder, and room for one band.
struct ReusableDecoder {
    PlaneDecoder planes;
    SampleBand band;
};

/// Releases the decoder's file, and keeps the decoder unless there are enough idle ones.
struct MakeIdle {
    void operator()(ReusableDecoder* decoder) const noexcept;
};

/// A decoder for one file; becomes idle when it is destroyed. May move between threads.
using BorrowedDecoder = std::unique_ptr<ReusableDecoder, MakeIdle>;

/// The decoder that became idle last, or a new one. Safe on all threads.
BorrowedDecoder borrowDecoder();

} // namespace kestrine::jpeg
