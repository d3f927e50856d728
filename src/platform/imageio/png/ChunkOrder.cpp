#include "platform/imageio/png/ChunkOrder.h"

#include "platform/imageio/png/ChunkSearch.h"

#include <algorithm>

namespace kestrine::png {

namespace {

/// Reads `head` in place of the first bytes of `file`.
class WithHead final : public ByteReader {
public:
    WithHead(Bytes head, std::shared_ptr<const ByteReader> file)
        : head_(std::move(head)), file_(std::move(file)) {}

    std::uint64_t size() const override { return file_->size(); }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        if (offset >= head_.size())
            return file_->readAt(offset, into);
        const ByteView held = ByteView(head_).subspan(offset);
        const std::size_t count = std::min(held.size(), into.size());
        std::copy_n(held.begin(), count, into.begin());
        return count == into.size() ? count : count + file_->readAt(head_.size(), into.subspan(count));
    }

private:
    const Bytes head_;
    const std::shared_ptr<const ByteReader> file_;
};

} // namespace

std::shared_ptr<const ByteReader> withTransparencyAfterColors(std::shared_ptr<const ByteReader> file) {
    constexpr std::uint64_t maximumHeadBytes = 1 << 20;
    const auto [transparency, colors] =
        findChunks(*file, {"tRNS", "PLTE"}, signatureBytes, SearchEnd::atPixels);
    if (!transparency || !colors || transparency->offset > colors->offset || colors->end() > maximumHeadBytes)
        return file;
    Bytes head(colors->end());
    if (file->readAt(0, head) < head.size())
        return file;
    std::rotate(head.begin() + static_cast<std::ptrdiff_t>(transparency->offset),
                head.begin() + static_cast<std::ptrdiff_t>(transparency->end()), head.end());
    return std::make_shared<WithHead>(std::move(head), std::move(file));
}

} // namespace kestrine::png
