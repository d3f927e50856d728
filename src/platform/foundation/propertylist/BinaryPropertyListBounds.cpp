// Visits the objects of a binary property list in the same way as libplist: from the root, and each object
// again for every reference to it. Uses its own stack instead of recursion, and stops at the first
// limit.
#include "platform/foundation/propertylist/PropertyListBounds.h"

#include <algorithm>
#include <string_view>

namespace kestrine {

namespace {

constexpr std::string_view header = "bplist00";
constexpr std::size_t trailerSize = 32;
constexpr std::uint64_t maxDataBytes = 64 * 1024 * 1024;

Failure outOfRange() { return {Reason::malformed, "the property list has a reference out of range"}; }
Failure unknownObject() {
    return {Reason::malformed, "the property list contains an object of an unknown kind"};
}

/// A container whose references are being followed.
struct OpenObject {
    std::uint64_t index;
    std::uint64_t nextReference; // offset of the reference to follow next
    std::uint64_t references;    // number of references left
};

/// The parsed first bytes of an object.
struct ObjectHead {
    unsigned kind;
    std::uint64_t count;
    std::uint64_t payload; // offset of the bytes after the head
};

class BinaryWalk {
public:
    explicit BinaryWalk(ByteView content) : content_(content) {}

    Result<void> readTrailer() {
        if (content_.size() < header.size() + trailerSize)
            return Failure{Reason::truncated, "the property list ends before its trailer"};
        if (!std::equal(header.begin(), header.end(), content_.begin()))
            return Failure{Reason::unsupported, "the property list has an unknown version"};
        const std::uint64_t trailer = content_.size() - trailerSize;
        offsetSize_ = content_[trailer + 6];
        referenceSize_ = content_[trailer + 7];
        objectCount_ = bigEndian(trailer + 8, 8);
        root_ = bigEndian(trailer + 16, 8);
        offsetTable_ = bigEndian(trailer + 24, 8);
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8)
            return Failure{Reason::malformed, "the property list has invalid reference sizes"};
        if (offsetTable_ < header.size() || offsetTable_ >= trailer)
            return outOfRange();
        if (objectCount_ > (trailer - offsetTable_) / offsetSize_)
            return outOfRange();
        isOpen_.resize(objectCount_);
        return {};
    }

    Result<void> walk() {
        TRY(visit(root_));
        while (!open_.empty()) {
            OpenObject& object = open_.back();
            if (object.references == 0) {
                isOpen_[object.index] = false;
                open_.pop_back();
                continue;
            }
            const std::uint64_t reference = bigEndian(object.nextReference, referenceSize_);
            object.nextReference += referenceSize_;
            object.references--;
            TRY(visit(reference));
        }
        return {};
    }

private:
    std::uint64_t bigEndian(std::uint64_t offset, std::uint64_t size) const {
        std::uint64_t number = 0;
        for (const std::uint8_t byte : content_.subspan(offset, size))
            number = (number << 8) | byte;
        return number;
    }

    /// Whether `count` elements of `size` bytes fit between `offset` and the offset table.
    bool fits(std::uint64_t offset, std::uint64_t count, std::uint64_t size) const {
        return offset <= offsetTable_ && count <= (offsetTable_ - offset) / size;
    }

    /// Reads the head of the object at `offset`, which lies before the offset table.
    Result<ObjectHead> readHead(std::uint64_t offset) const {
        const unsigned marker = content_[offset];
        ObjectHead head{marker >> 4, marker & 0x0f, offset + 1};
        const bool hasLongCount = head.count == 0x0f && head.kind >= 4 && head.kind != 8;
        if (!hasLongCount)
            return head;
        if (!fits(head.payload, 1, 1) || (content_[head.payload] & 0xf0) != 0x10)
            return unknownObject();
        const unsigned sizeExponent = content_[head.payload] & 0x0f;
        if (sizeExponent > 3 || !fits(head.payload + 1, 1u << sizeExponent, 1))
            return outOfRange();
        head.count = bigEndian(head.payload + 1, 1u << sizeExponent);
        head.payload += 1 + (1u << sizeExponent);
        return head;
    }

    Result<void> visit(std::uint64_t index) {
        if (index >= objectCount_)
            return outOfRange();
        if (isOpen_[index])
            return Failure{Reason::malformed, "an object of the property list contains itself"};
        if (++visits_ > maxPropertyListObjects)
            return Failure{Reason::tooLarge, "the property list contains too many objects"};
        const std::uint64_t offset = bigEndian(offsetTable_ + index * offsetSize_, offsetSize_);
        if (offset < header.size() || offset >= offsetTable_)
            return outOfRange();
        return enter(index, TRY(readHead(offset)));
    }

    /// Checks the object, and opens it if it is a container.
    Result<void> enter(std::uint64_t index, const ObjectHead& head) {
        switch (head.kind) {
        case 0x0: // null, false, true
            return {};
        case 0x1: // integer of 2^count bytes
            return head.count <= 4 ? countData(head.payload, 1u << head.count, 1) : unknownObject();
        case 0x2: // real of 2^count bytes
        case 0x3: // date
            return head.count == 2 || head.count == 3 ? countData(head.payload, 1u << head.count, 1)
                                                      : unknownObject();
        case 0x4: // data
        case 0x5: // ASCII text
            return countData(head.payload, head.count, 1);
        case 0x6: // UTF-16 text
            return countData(head.payload, head.count, 2);
        case 0x8: // UID of count + 1 bytes
            return head.count <= 7 ? countData(head.payload, head.count + 1, 1) : unknownObject();
        case 0xa: // array
        case 0xc: // set
            return open(index, head, 1);
        case 0xd: // dictionary: all keys, then all values
            return open(index, head, 2);
        default:
            return unknownObject();
        }
    }

    Result<void> countData(std::uint64_t offset, std::uint64_t count, std::uint64_t unitSize) {
        if (!fits(offset, count, unitSize))
            return outOfRange();
        dataBytes_ += count * unitSize;
        if (dataBytes_ > maxDataBytes)
            return Failure{Reason::tooLarge, "the property list contains too many bytes"};
        return {};
    }

    Result<void> open(std::uint64_t index, const ObjectHead& head, std::uint64_t referencesEach) {
        if (!fits(head.payload, head.count, referencesEach * referenceSize_))
            return outOfRange();
        if (open_.size() == maxPropertyListDepth)
            return Failure{Reason::tooLarge, "the property list is nested too deeply"};
        open_.push_back({index, head.payload, head.count * referencesEach});
        isOpen_[index] = true;
        return {};
    }

    ByteView content_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t root_ = 0;
    std::uint64_t offsetTable_ = 0;
    std::uint64_t visits_ = 0;
    std::uint64_t dataBytes_ = 0;
    std::vector<OpenObject> open_;
    std::vector<bool> isOpen_;
};

} // namespace

Result<void> checkBinaryPropertyListBounds(ByteView content) {
    BinaryWalk walk(content);
    TRY(walk.readTrailer());
    return walk.walk();
}

} // namespace kestrine
