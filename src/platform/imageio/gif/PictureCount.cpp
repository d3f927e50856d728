#include "platform/imageio/gif/PictureCount.h"

#include "platform/imageio/ForwardReader.h"

namespace kestrine::gif {

namespace {

constexpr std::size_t bufferBytes = 1 << 16;
constexpr int pictureMark = ',', extensionMark = '!';

/// Walks through the blocks of a file.
class Blocks {
public:
    explicit Blocks(std::shared_ptr<const ByteReader> reader) : input_(std::move(reader), 0, bufferBytes) {}

    /// Goes to the first block.
    void skipScreen() {
        constexpr int bytesBeforeFlags = 10, bytesAfterFlags = 2;
        skip(bytesBeforeFlags);
        const int flags = input_.next();
        skip(bytesAfterFlags);
        skipColors(flags);
    }

    /// Passes one block. Returns its type, or -1 at the end of the file.
    int passBlock() {
        const int type = input_.next();
        if (type == pictureMark)
            skipPictureHeader();
        else if (type == extensionMark)
            skip(1); // its label
        else
            return -1;
        return skipSubBlocks() ? type : -1;
    }

private:
    void skipPictureHeader() {
        constexpr int bytesOfPosition = 8;
        skip(bytesOfPosition);
        skipColors(input_.next());
        skip(1); // the size of the codes
    }

    void skipColors(int flags) {
        if (flags >= 0 && (flags & 0x80) != 0)
            skip(3 << ((flags & 7) + 1));
    }

    /// Returns whether the last sub-block is there.
    bool skipSubBlocks() {
        int length = 0;
        while ((length = input_.next()) > 0)
            skip(length);
        return length == 0;
    }

    void skip(int count) { input_.moveTo(input_.offset() + static_cast<std::uint64_t>(count)); }

    ForwardReader input_;
};

} // namespace

std::uint32_t countPictures(std::shared_ptr<const ByteReader> reader) {
    Blocks blocks(std::move(reader));
    blocks.skipScreen();
    std::uint32_t count = 0;
    for (int type = blocks.passBlock(); type >= 0; type = blocks.passBlock())
        count += type == pictureMark ? 1 : 0;
    return count;
}

} // namespace kestrine::gif
