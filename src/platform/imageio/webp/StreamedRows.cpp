#include "platform/imageio/webp/StreamedRows.h"

#include "platform/host/process/PagedMemory.h"

#include <algorithm>

namespace kestrine::webp {

namespace {

/// The library writes into memory for the whole picture, from the first row to the last, and is given the
/// file in pieces. The pages of rows that have been read are discarded.
class StreamedRows final : public RowSource {
public:
    StreamedRows(const Functions& library, std::shared_ptr<const Bytes> file, const Frame& frame,
                 const RowFormat& format, PagedMemory memory)
        : RowSource(format), library_(library), file_(std::move(file)), chunks_(frame.chunks),
          pieceBytes_(
              std::max(chunks_.size() / (frame.isLossless ? losslessPieces : lossyPieces), minPieceBytes)),
          memory_(std::move(memory)), decoder_(nullptr, library.deleteDecoder) {}

    /// Must be called once, before any row is read.
    Result<void> start() {
        if (!library_.initializeBuffer(&output_, WEBP_DECODER_ABI_VERSION))
            return Failure{Reason::unsupported, "this version of libwebp cannot be used"};
        output_.colorspace = format().hasAlpha ? MODE_RGBA : MODE_RGB;
        output_.is_external_memory = 1;
        output_.u.RGBA = {memory_.data(), static_cast<int>(format().bytesPerRow()), memory_.size()};
        decoder_.reset(library_.createDecoder(&output_));
        if (!decoder_)
            return Failure{Reason::outOfMemory, "not enough memory"};
        return {};
    }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        while (decoded_ <= next_)
            TRY(decodeMore());
        const std::size_t rowBytes = format().bytesPerRow();
        std::copy_n(memory_.data() + next_ * rowBytes, rowBytes, row.begin());
        ++next_;
        if (next_ % rowsPerDiscard == 0)
            memory_.discardBefore(next_ * rowBytes);
        return {};
    }

private:
    /// The library repeats up to eight rows of a lossless picture for each piece.
    static constexpr std::size_t lossyPieces = 256, losslessPieces = 32, minPieceBytes = 4096;
    static constexpr std::uint32_t rowsPerDiscard = 32;

    Result<void> decodeMore() {
        const Failure damaged{Reason::malformed, "the WebP picture cannot be decoded"};
        if (given_ == chunks_.size())
            return damaged;
        given_ = std::min(given_ + pieceBytes_, chunks_.size());
        const VP8StatusCode status = library_.decodeMore(decoder_.get(), chunks_.data(), given_);
        if (status == VP8_STATUS_OUT_OF_MEMORY)
            return Failure{Reason::outOfMemory, "not enough memory"};
        if (status != VP8_STATUS_OK && status != VP8_STATUS_SUSPENDED)
            return damaged;
        int decoded = 0;
        if (library_.decodedRows(decoder_.get(), &decoded, nullptr, nullptr, nullptr) != nullptr)
            decoded_ = static_cast<std::uint32_t>(decoded);
        return {};
    }

    const Functions& library_;
    const std::shared_ptr<const Bytes> file_;
    const ByteView chunks_;
    const std::size_t pieceBytes_;
    PagedMemory memory_;   ///< outlives the decoder, which writes into it
    WebPDecBuffer output_; ///< outlives the decoder, too
    std::unique_ptr<WebPIDecoder, decltype(&WebPIDelete)> decoder_;
    std::size_t given_ = 0;                ///< bytes of the chunks
    std::uint32_t decoded_ = 0, next_ = 0; ///< rows
};

} // namespace

Result<RowSourcePointer> streamedRows(const Functions& library, std::shared_ptr<const Bytes> file,
                                      const Frame& frame, const RowFormat& format) {
    PagedMemory memory = TRY(PagedMemory::create(format.bytes()));
    auto rows = std::make_unique<StreamedRows>(library, std::move(file), frame, format, std::move(memory));
    TRY(rows->start());
    return RowSourcePointer(std::move(rows));
}

} // namespace kestrine::webp
