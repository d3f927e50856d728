// LibraryReader: reads a JPEG file once with libjpeg-turbo.
#pragma once

#include "platform/imageio/jpeg/Input.h"

#include <initializer_list>
#include <optional>

namespace kestrine::jpeg {

/// The blocks that the scans after the first may visit in total, in a file of this many bytes.
std::uint64_t maxBlockVisits(std::uint64_t fileBytes);

class LibraryReader {
public:
    explicit LibraryReader(std::shared_ptr<const ByteReader> reader);
    ~LibraryReader();
    LibraryReader(const LibraryReader&) = delete;
    LibraryReader& operator=(const LibraryReader&) = delete;

    /// Reads up to the first scan. `keptSegments` are the numbers n of the APPn segments to keep.
    Result<void> readHeader(std::initializer_list<int> keptSegments = {});

    /// Offset in the file of the next byte that the library will use.
    std::uint64_t position() const { return input_.offset - input_.manager.bytes_in_buffer; }

    /// Why some of the pixels decoded so far had to be invented; nullopt if none had. Decompression must have
    /// begun.
    std::optional<Failure> damage();

    jpeg_decompress_struct info{};
    Errors errors{};

private:
    struct Progress {
        jpeg_progress_mgr manager; ///< the first member, so that the library's pointer to it is one to this
        int lastScan;
        std::uint64_t blockVisits; ///< in all scans after the first
        std::uint64_t maxBlockVisits;
    };

    static void limitScans(j_common_ptr info);
    bool lacksScans();

    std::shared_ptr<const ByteReader> reader_;
    Progress progress_{};
    Input input_{};
    bool created_ = false;
};

} // namespace kestrine::jpeg
