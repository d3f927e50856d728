// Plane decoders between two files. One keeps its tables and buffers when its file is done, and the next file
// on any thread takes it over: so a file costs what its bytes cost, and a worker that converts many files
// goes on in memory that is in its cache.
#pragma once

#include "platform/imageio/jpeg/own/PlaneDecoder.h"

#include <memory>

namespace kestrine::jpeg {

struct LayToRest {
    void operator()(PlaneDecoder* decoder) const noexcept;
};
/// A decoder for one file; goes to rest with the end of its life. May move between threads.
using BorrowedDecoder = std::unique_ptr<PlaneDecoder, LayToRest>;

/// The decoder that went to rest last, or a new one.
BorrowedDecoder borrowDecoder();

} // namespace kestrine::jpeg
