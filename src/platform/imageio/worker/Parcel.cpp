#include "platform/imageio/worker/Parcel.h"

#include "platform/host/process/MessageBytes.h"

namespace kestrine::worker {

namespace {

/// Longer parts go into the shared file. Copying short ones through a socket costs less than a page of a new
/// file.
constexpr std::size_t maxInlineBytes = 24 * 1024;
static_assert(2 * maxInlineBytes + 64 < MessageSocket::maxBytes);

/// A request with the largest profile and EXIF block, or a response with a million frames.
constexpr std::uint64_t maxHeadBytes = std::uint64_t{64} << 20;

/// One part of a parcel on its way: in the message, or in the shared file from `offset` on.
class PartReader {
public:
    explicit PartReader(MessageReader& reader, std::uint64_t limit) : isInline_(reader.flag()) {
        if (isInline_)
            bytes_ = reader.bytes(maxInlineBytes);
        else
            size_ = reader.number<std::uint64_t>();
        reader.refuseUnless(size_ <= limit && bytes_.size() <= limit);
    }

    Result<Bytes> read(const MemoryFile& shared, std::uint64_t& offset) const {
        if (isInline_)
            return Bytes(bytes_.begin(), bytes_.end());
        offset += size_;
        return shared.read(offset - size_, size_);
    }

private:
    const bool isInline_;
    ByteView bytes_;
    std::uint64_t size_ = 0;
};

} // namespace

Result<Bytes> packed(const Parcel& parcel, const MemoryFile& shared) {
    MessageWriter message;
    std::uint64_t offset = 0;
    for (const Bytes* part : {&parcel.head, &parcel.content}) {
        const bool isInline = part->size() <= maxInlineBytes;
        message.add(isInline);
        if (isInline) {
            message.add(ByteView(*part));
            continue;
        }
        message.add(std::uint64_t{part->size()});
        TRY(shared.write(*part, offset));
        offset += part->size();
    }
    return std::move(message).take();
}

Result<Parcel> unpacked(ByteView message, const MemoryFile& shared, std::uint64_t maxContent) {
    MessageReader reader(message);
    const PartReader head(reader, maxHeadBytes), content(reader, maxContent);
    if (!reader.isComplete())
        return Failure{Reason::malformed, "a message between processes is damaged"};
    std::uint64_t offset = 0;
    Bytes headBytes = TRY(head.read(shared, offset));
    Bytes contentBytes = TRY(content.read(shared, offset));
    return Parcel{std::move(headBytes), std::move(contentBytes)};
}

} // namespace kestrine::worker
