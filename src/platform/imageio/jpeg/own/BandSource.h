// BandSource: the bands of a JPEG file, from top to bottom.
#pragma once

#include "platform/host/Result.h"
#include "platform/imageio/jpeg/own/SampleBand.h"

#include <memory>

namespace kestrine::jpeg {

/// Used by one thread at a time.
class BandSource {
public:
    virtual ~BandSource() = default;

    /// The next band and the row before it, which stay valid until the next call. Must be called at most once
    /// for each band, and not after a failure.
    virtual Result<const SampleBand*> next() = 0;
};

/// Starts decoding at `eighths` (8, 4, 2 or 1) of the full size. The current crew decodes
/// ahead, if there is one for the picture. Fails like openOwnRows().
Result<std::unique_ptr<BandSource>> openBands(std::shared_ptr<const ByteReader> reader,
                                              const FrameHeader& header, int eighths);

} // namespace kestrine::jpeg
