#include "platform/imageio/heif/AV1Picture.h"

#include "platform/imageio/heif/AV1Library.h"

#include <algorithm>
#include <cstring>

namespace kestrine::heif {

namespace {

CodingPoints pointsIn(const Dav1dSequenceHeader& header) {
    return {static_cast<std::uint16_t>(header.pri), static_cast<std::uint16_t>(header.trc),
            static_cast<std::uint16_t>(header.mtrx), header.color_range != 0};
}

Failure damagedAV1(int error) {
    if (error == DAV1D_ERR(ENOMEM))
        return {Reason::outOfMemory, "not enough memory"};
    if (error == DAV1D_ERR(ERANGE))
        return damagedFile("a coded picture is larger than the file says");
    return {Reason::malformed, "the AV1 picture is damaged"};
}

class AV1Decoder {
public:
    explicit AV1Decoder(const AV1Functions& library) : library_(library) {}
    ~AV1Decoder() {
        library_.releaseData(&data_);
        if (decoder_ != nullptr)
            library_.close(&decoder_);
    }
    AV1Decoder(const AV1Decoder&) = delete;
    AV1Decoder& operator=(const AV1Decoder&) = delete;

    Result<void> start(const CodingSetup& coding, const Size& expected, std::size_t threads) {
        Dav1dSettings settings;
        library_.setDefaults(&settings);
        settings.n_threads = static_cast<int>(threads);
        settings.max_frame_delay = 1;
        settings.frame_size_limit = static_cast<unsigned>(
            std::min<std::uint64_t>(std::uint64_t{expected.width} * expected.height, UINT_MAX));
        settings.operating_point = coding.operatingPoint;
        settings.all_layers = coding.spatialLayer ? 1 : 0;
        settings.logger = {nullptr, nullptr};
        const int error = library_.open(&decoder_, &settings);
        return error == 0 ? Result<void>() : damagedAV1(error);
    }

    Result<void> load(ByteView data) {
        std::uint8_t* const memory = library_.createData(&data_, data.size());
        if (memory == nullptr)
            return damagedAV1(data.empty() ? 0 : DAV1D_ERR(ENOMEM));
        std::memcpy(memory, data.data(), data.size());
        return {};
    }

    /// The next picture, which the caller must release.
    Result<Dav1dPicture> next() {
        Dav1dPicture picture{};
        for (;;) {
            int error = data_.sz > 0 ? library_.sendData(decoder_, &data_) : 0;
            if (error != 0 && error != DAV1D_ERR(EAGAIN))
                return damagedAV1(error);
            const bool hasSentAll = data_.sz == 0;
            error = library_.nextPicture(decoder_, &picture);
            if (error == 0)
                return picture;
            if (error != DAV1D_ERR(EAGAIN) || hasSentAll)
                return damagedAV1(error);
        }
    }

private:
    const AV1Functions& library_;
    Dav1dContext* decoder_ = nullptr;
    Dav1dData data_{};
};

class AV1Picture final : public CodedPicture {
public:
    AV1Picture(const AV1Functions& library, const Dav1dPicture& picture)
        : library_(library), picture_(picture) {
        const Dav1dPixelLayout layout = picture.p.layout;
        planes_.isMonochrome = layout == DAV1D_PIXEL_LAYOUT_I400;
        planes_.isHalfWidth = layout == DAV1D_PIXEL_LAYOUT_I420 || layout == DAV1D_PIXEL_LAYOUT_I422;
        planes_.isHalfHeight = layout == DAV1D_PIXEL_LAYOUT_I420;
        planes_.bits = static_cast<unsigned>(picture.p.bpc);
        planes_.points = pointsIn(*picture.seq_hdr);
        const Size size{static_cast<std::uint32_t>(picture.p.w), static_cast<std::uint32_t>(picture.p.h)};
        const Size chroma{planes_.isHalfWidth ? (size.width + 1) / 2 : size.width,
                          planes_.isHalfHeight ? (size.height + 1) / 2 : size.height};
        for (std::size_t i = 0; i < 3; ++i)
            planes_.planes[i] = {static_cast<const std::uint8_t*>(picture.data[i]),
                                 picture.stride[i == 0 ? 0 : 1], i == 0 ? size : chroma};
    }
    ~AV1Picture() override { library_.releasePicture(&picture_); }
    AV1Picture(const AV1Picture&) = delete;
    AV1Picture& operator=(const AV1Picture&) = delete;

private:
    const AV1Functions& library_;
    Dav1dPicture picture_;
};

} // namespace

Result<std::unique_ptr<CodedPicture>> decodeAV1(const CodingSetup& coding, ByteView data,
                                                const Size& expected, std::size_t threads) {
    const Result<AV1Functions>& library = av1Functions();
    if (!library)
        return library.failure();
    AV1Decoder decoder(*library);
    TRY(decoder.start(coding, expected, threads));
    TRY(decoder.load(data));
    for (;;) {
        const Dav1dPicture found = TRY(decoder.next());
        auto picture = std::make_unique<AV1Picture>(*library, found);
        if (!coding.spatialLayer || found.frame_hdr->spatial_id == *coding.spatialLayer)
            return std::unique_ptr<CodedPicture>(std::move(picture));
    }
}

std::optional<CodingPoints> pointsInSequenceHeader(ByteView data) {
    const Result<AV1Functions>& library = av1Functions();
    Dav1dSequenceHeader header;
    if (!library || data.empty() || library->parseSequenceHeader(&header, data.data(), data.size()) != 0)
        return std::nullopt;
    return pointsIn(header);
}

} // namespace kestrine::heif
