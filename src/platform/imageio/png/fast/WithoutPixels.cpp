#include "platform/imageio/png/fast/WithoutPixels.h"

#include <algorithm>
#include <array>

namespace kestrine::png {

namespace {

/// IDAT with the zlib stream of nothing.
constexpr std::array<std::uint8_t, 20> emptyChunk = {0,    0,    0, 8, 'I', 'D', 'A',  'T',  0x78, 0x9C,
                                                     0x03, 0x00, 0, 0, 0,   1,   0x48, 0x06, 0x89, 0xD2};

class FileWithoutPixels final : public ByteReader {
public:
    FileWithoutPixels(std::shared_ptr<const ByteReader> file, std::uint64_t pixels, std::uint64_t behind)
        : file_(std::move(file)), pixels_(pixels), behind_(behind) {}

    std::uint64_t size() const override {
        return pixels_ + emptyChunk.size() + (file_->size() - std::min(behind_, file_->size()));
    }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        std::size_t done = 0;
        while (done < into.size()) {
            const std::size_t part = readPart(offset + done, into.subspan(done));
            if (part == 0)
                break;
            done += part;
        }
        return done;
    }

private:
    /// As readAt(), up to the next seam.
    std::size_t readPart(std::uint64_t offset, std::span<std::uint8_t> into) const {
        const std::uint64_t seam = pixels_ + emptyChunk.size();
        if (offset >= seam)
            return file_->readAt(behind_ + (offset - seam), into);
        if (offset < pixels_)
            return file_->readAt(offset, into.first(std::min<std::uint64_t>(into.size(), pixels_ - offset)));
        const auto from = std::span(emptyChunk).subspan(offset - pixels_);
        const std::size_t count = std::min(into.size(), from.size());
        std::copy_n(from.begin(), count, into.begin());
        return count;
    }

    const std::shared_ptr<const ByteReader> file_;
    const std::uint64_t pixels_, behind_;
};

} // namespace

std::shared_ptr<const ByteReader> withoutPixels(std::shared_ptr<const ByteReader> file, std::uint64_t pixels,
                                                std::uint64_t behind) {
    return std::make_shared<FileWithoutPixels>(std::move(file), pixels, behind);
}

} // namespace kestrine::png
