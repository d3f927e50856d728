#include "platform/imageio/heif/HEVCPicture.h"

#include "platform/imageio/heif/HEVCLibrary.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace kestrine::heif {

namespace {

Failure damagedHEVC() { return {Reason::malformed, "the HEVC picture is damaged"}; }

/// The coded picture is this much larger than the shown one at most: a block, whose rest is cut off.
constexpr std::uint32_t maxBlock = 64;

/// Holds the decoder, which owns the picture.
class HEVCPicture final : public CodedPicture {
public:
    HEVCPicture(const HEVCFunctions& library, const Size& expected)
        : library_(library), expected_(expected), decoder_(library.create()) {}
    ~HEVCPicture() override {
        if (decoder_ != nullptr)
            library_.destroy(decoder_);
    }
    HEVCPicture(const HEVCPicture&) = delete;
    HEVCPicture& operator=(const HEVCPicture&) = delete;

    Result<void> decode(const CodingSetup& coding, ByteView data, std::size_t threads) {
        if (decoder_ == nullptr)
            return Failure{Reason::outOfMemory, "not enough memory"};
        de265_image_allocation allocation{getBuffer, releaseBuffer};
        library_.setAllocation(decoder_, &allocation, this);
        library_.setFlag(decoder_, DE265_DECODER_PARAM_SUPPRESS_FAULTY_PICTURES, 1);
        if (threads > 1)
            library_.startThreads(decoder_, static_cast<int>(threads));
        TRY(pushConfiguration(coding.configuration));
        TRY(pushUnits(data, lengthSize_));
        library_.endOfData(decoder_);
        return takePicture();
    }

private:
    /// Passes the parameter sets in the box hvcC to the decoder.
    Result<void> pushConfiguration(ByteView configuration) {
        Cursor cursor(configuration);
        cursor.skip(21);
        lengthSize_ = (cursor.u8() & 3u) + 1;
        for (unsigned arrays = cursor.u8(); arrays > 0 && cursor.isSound(); --arrays) {
            cursor.skip(1); // the type of the units
            for (unsigned units = cursor.u16(); units > 0 && cursor.isSound(); --units)
                TRY(push(cursor.take(cursor.u16())));
        }
        return cursor.isSound() ? Result<void>() : damagedHEVC();
    }

    /// Units, each after its length.
    Result<void> pushUnits(ByteView data, std::size_t lengthSize) {
        Cursor cursor(data);
        while (!cursor.rest().empty()) {
            TRY(push(cursor.take(static_cast<std::size_t>(cursor.number(lengthSize)))));
            if (!cursor.isSound())
                return damagedHEVC();
        }
        return {};
    }

    Result<void> push(ByteView unit) {
        constexpr std::size_t unitHeaderBytes = 2;
        if (unit.size() < unitHeaderBytes)
            return {};
        if (unit.size() > std::numeric_limits<int>::max()
            || library_.push(decoder_, unit.data(), static_cast<int>(unit.size()), 0, nullptr) != DE265_OK)
            return damagedHEVC();
        return {};
    }

    Result<void> takePicture() {
        int hasMore = 1;
        while (hasMore != 0) {
            hasMore = 0;
            const de265_error error = library_.decode(decoder_, &hasMore);
            if (const de265_image* image = library_.nextPicture(decoder_))
                return describe(image);
            if (error != DE265_OK)
                break;
        }
        return hasWrongSize_ ? damagedFile("a coded picture is larger than the file says") : damagedHEVC();
    }

    Result<void> describe(const de265_image* image) {
        const de265_chroma chroma = library_.chroma(image);
        planes_.isMonochrome = chroma == de265_chroma_mono;
        planes_.isHalfWidth = chroma == de265_chroma_420 || chroma == de265_chroma_422;
        planes_.isHalfHeight = chroma == de265_chroma_420;
        planes_.bits = static_cast<unsigned>(library_.bits(image, 0));
        for (int channel = 0; channel < (planes_.isMonochrome ? 1 : 3); ++channel) {
            int stride = 0;
            const std::uint8_t* bytes = library_.plane(image, channel, &stride);
            planes_.planes[static_cast<std::size_t>(channel)] = {
                bytes,
                stride,
                {static_cast<std::uint32_t>(library_.width(image, channel)),
                 static_cast<std::uint32_t>(library_.height(image, channel))}};
            if (library_.bits(image, channel) != static_cast<int>(planes_.bits))
                return Failure{Reason::unsupported, "HEVC pictures whose colours have fewer bits than their "
                                                    "brightness are not supported"};
        }
        planes_.points = {static_cast<std::uint16_t>(library_.primaries(image)),
                          static_cast<std::uint16_t>(library_.transfer(image)),
                          static_cast<std::uint16_t>(library_.matrix(image)),
                          library_.isFullRange(image) != 0};
        return {};
    }

    /// Called by the library before it decodes a picture. Samples that it does not decode become grey.
    static int getBuffer(de265_decoder_context*, de265_image_spec* spec, de265_image* image, void* userData) {
        auto& self = *static_cast<HEVCPicture*>(userData);
        const auto isTooLarge = [](int coded, std::uint32_t expected) {
            return coded <= 0 || static_cast<std::uint32_t>(coded) > expected + maxBlock;
        };
        if (isTooLarge(spec->width, self.expected_.width)
            || isTooLarge(spec->height, self.expected_.height)) {
            self.hasWrongSize_ = true;
            return 0;
        }
        const int channels = spec->format == de265_image_format_mono8 ? 1 : 3;
        for (int channel = 0; channel < channels; ++channel)
            if (!self.addPlane(*spec, image, channel))
                return 0;
        return 1;
    }

    bool addPlane(const de265_image_spec& spec, de265_image* image, int channel) const {
        const bool isChroma = channel > 0;
        const bool isHalfWidth = isChroma && spec.format != de265_image_format_YUV444P8;
        const bool isHalfHeight = isChroma && spec.format == de265_image_format_YUV420P8;
        const auto columns = static_cast<std::size_t>(isHalfWidth ? (spec.width + 1) / 2 : spec.width);
        const auto rows = static_cast<std::size_t>(isHalfHeight ? (spec.height + 1) / 2 : spec.height);
        const std::size_t stride = (columns + alignment - 1) / alignment * alignment; // in samples
        const int bits = library_.bits(image, channel);
        const std::size_t size = stride * rows * (bits > 8 ? 2 : 1) + alignment;
        void* const memory = std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
        if (memory == nullptr)
            return false;
        if (bits > 8)
            std::fill_n(static_cast<std::uint16_t*>(memory), size / 2,
                        static_cast<std::uint16_t>(1u << (bits - 1)));
        else
            std::memset(memory, 0x80, size);
        library_.setPlane(image, channel, memory, static_cast<int>(stride), memory);
        return true;
    }

    static void releaseBuffer(de265_decoder_context*, de265_image* image, void* userData) {
        const auto& self = *static_cast<const HEVCPicture*>(userData);
        for (int channel = 0; channel < 3; ++channel) {
            std::free(self.library_.planeData(image, channel));
            self.library_.setPlane(image, channel, nullptr, 0, nullptr);
        }
    }

    static constexpr std::size_t alignment = 64; ///< of the rows of planes

    const HEVCFunctions& library_;
    const Size expected_;
    de265_decoder_context* const decoder_;
    std::size_t lengthSize_ = 4;
    bool hasWrongSize_ = false;
};

} // namespace

Result<std::unique_ptr<CodedPicture>> decodeHEVC(const CodingSetup& coding, ByteView data,
                                                 const Size& expected, std::size_t threads) {
    const Result<HEVCFunctions>& library = hevcFunctions();
    if (!library)
        return library.failure();
    auto picture = std::make_unique<HEVCPicture>(*library, expected);
    TRY(picture->decode(coding, data, threads));
    return std::unique_ptr<CodedPicture>(std::move(picture));
}

} // namespace kestrine::heif
