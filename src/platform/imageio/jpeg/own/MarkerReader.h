// MarkerReader: goes from marker to marker of a JPEG file without decoding anything.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/files/ByteReader.h"

#include <optional>

namespace kestrine::jpeg {

class MarkerReader {
public:
    /// Begins at this offset. `file` must exist as long as the reader.
    MarkerReader(const ByteReader& file, std::uint64_t offset);

    /// Offset in the file of the next byte.
    std::uint64_t position() const { return offset_ - (count_ - next_); }

    static constexpr int none = 0; ///< not the code of a marker

    /// Passes the entropy-coded bytes of a scan with their restart markers, and the marker after them, whose
    /// code it returns; none at the end of the file.
    int passScan();

    /// Passes a marker, which must follow here, and returns its code; none when no marker does.
    int nextMarker();

    /// The content of the marker segment whose marker was passed; none when the file ends before or the
    /// length is invalid.
    std::optional<Bytes> segment();

private:
    static constexpr int endOfFile = -1;

    int nextByte();
    bool findFF();
    bool fill();
    int codeAfterFF();

    const ByteReader& file_;
    std::uint64_t offset_; ///< of the byte after `bytes_`
    Bytes bytes_;          ///< a piece of the file
    std::size_t next_ = 0, count_ = 0;
};

} // namespace kestrine::jpeg
