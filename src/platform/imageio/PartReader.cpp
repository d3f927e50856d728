#include "platform/imageio/PartReader.h"

#include <algorithm>

namespace kestrine {

namespace {

class Part final : public ByteReader {
public:
    Part(std::shared_ptr<const ByteReader> whole, std::uint64_t offset, std::uint64_t length)
        : whole_(std::move(whole)), offset_(std::min(offset, whole_->size())),
          size_(std::min(length, whole_->size() - offset_)) {}

    std::uint64_t size() const override { return size_; }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        if (offset >= size_)
            return 0;
        const std::uint64_t left = size_ - offset;
        return whole_->readAt(offset_ + offset, into.first(static_cast<std::size_t>(
                                                    std::min<std::uint64_t>(into.size(), left))));
    }

private:
    const std::shared_ptr<const ByteReader> whole_;
    const std::uint64_t offset_, size_;
};

} // namespace

std::shared_ptr<const ByteReader> readerOfPart(std::shared_ptr<const ByteReader> whole, std::uint64_t offset,
                                               std::uint64_t length) {
    return std::make_shared<Part>(std::move(whole), offset, length);
}

std::shared_ptr<const ByteReader> readerFrom(std::shared_ptr<const ByteReader> whole, std::uint64_t offset) {
    const std::uint64_t size = whole->size();
    return readerOfPart(std::move(whole), offset, size);
}

} // namespace kestrine
