#include "platform/imageio/jp2/Codestream.h"

#include <algorithm>
#include <array>

namespace kestrine::jp2 {

namespace {

constexpr std::size_t streamBuffer = 1 << 16;
/// No tile takes fewer bytes of the file: the markers that begin it and its data.
constexpr std::uint64_t minTileBytes = 14;

} // namespace

bool isBareCodestream(ByteView head) {
    constexpr std::array<std::uint8_t, 4> start = {0xff, 0x4f, 0xff, 0x51};
    return head.size() >= start.size() && std::equal(start.begin(), start.end(), head.begin());
}

Result<std::unique_ptr<Codestream>> Codestream::open(const Functions& library,
                                                     std::shared_ptr<const ByteReader> reader, int halvings,
                                                     std::size_t threads) {
    std::unique_ptr<Codestream> codestream(new Codestream(library, std::move(reader)));
    TRY(codestream->start(halvings, threads));
    return codestream;
}

Codestream::~Codestream() {
    library_.destroyImage(image_);
    if (decoder_ != nullptr)
        library_.destroyDecoder(decoder_);
    if (stream_ != nullptr)
        library_.destroyStream(stream_);
}

Result<void> Codestream::start(int halvings, std::size_t threads) {
    decoder_ = library_.createDecoder(OPJ_CODEC_J2K);
    stream_ = library_.createStream(streamBuffer, OPJ_TRUE);
    if (decoder_ == nullptr || stream_ == nullptr)
        return Failure{Reason::tooLarge, "there is not enough memory for the JPEG 2000 picture"};
    library_.setRead(stream_, read);
    library_.setSkip(stream_, skip);
    library_.setSeek(stream_, seek);
    library_.setUserData(stream_, this, nullptr);
    library_.setLength(stream_, reader_->size());
    opj_dparameters_t parameters{};
    library_.defaultParameters(&parameters);
    parameters.cp_reduce = static_cast<OPJ_UINT32>(halvings);
    if (!library_.setUp(decoder_, &parameters))
        return Failure{Reason::malformed, "the JPEG 2000 decoder cannot be set up"};
    if (threads > 1)
        library_.setThreads(decoder_, static_cast<int>(threads));
    if (!library_.readHeader(stream_, decoder_, &image_) || image_ == nullptr || image_->numcomps == 0)
        return Failure{Reason::malformed, "the header of the JPEG 2000 file is damaged"};
    return readTiles();
}

Result<void> Codestream::readTiles() {
    opj_codestream_info_v2_t* info = library_.describe(decoder_);
    if (info == nullptr)
        return Failure{Reason::malformed, "the header of the JPEG 2000 file has no tiles"};
    tiles_ = {{image_->x0, image_->y0, image_->x1, image_->y1},
              info->tx0,
              info->ty0,
              info->tdx,
              info->tdy,
              info->tw,
              info->th,
              32};
    for (std::uint32_t c = 0; c < info->nbcomps; ++c) {
        const auto resolutions = info->m_default_tile_info.tccp_info[c].numresolutions;
        tiles_.halvings = std::min(tiles_.halvings, static_cast<int>(resolutions) - 1);
    }
    library_.destroyDescription(&info);
    if (std::uint64_t{tiles_.columns} * tiles_.rows > reader_->size() / minTileBytes)
        return Failure{Reason::truncated, "the JPEG 2000 file is too short for its tiles"};
    return {};
}

Area TileGrid::tile(std::uint32_t column, std::uint32_t row) const {
    const std::uint64_t left = x0 + std::uint64_t{column} * width, top = y0 + std::uint64_t{row} * height;
    const auto limited = [](std::uint64_t value, std::uint32_t low, std::uint32_t high) {
        return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(value, low, high));
    };
    return {limited(left, picture.x0, picture.x1), limited(top, picture.y0, picture.y1),
            limited(left + width, picture.x0, picture.x1), limited(top + height, picture.y0, picture.y1)};
}

Result<void> Codestream::decodeTile(std::uint32_t column, std::uint32_t row) {
    if (!library_.decodeTile(decoder_, stream_, image_, row * tiles_.columns + column))
        return Failure{Reason::malformed, "the JPEG 2000 picture is damaged or incomplete"};
    return {};
}

OPJ_SIZE_T Codestream::read(void* into, OPJ_SIZE_T count, void* codestream) {
    auto& self = *static_cast<Codestream*>(codestream);
    const std::size_t got =
        self.reader_->readAt(self.position_, std::span(static_cast<std::uint8_t*>(into), count));
    self.position_ += got;
    return got == 0 ? static_cast<OPJ_SIZE_T>(-1) : got;
}

OPJ_OFF_T Codestream::skip(OPJ_OFF_T count, void* codestream) {
    auto& self = *static_cast<Codestream*>(codestream);
    if (count < 0 || static_cast<std::uint64_t>(count) > self.reader_->size() - self.position_)
        return -1;
    self.position_ += static_cast<std::uint64_t>(count);
    return count;
}

OPJ_BOOL Codestream::seek(OPJ_OFF_T position, void* codestream) {
    auto& self = *static_cast<Codestream*>(codestream);
    if (position < 0 || static_cast<std::uint64_t>(position) > self.reader_->size())
        return OPJ_FALSE;
    self.position_ = static_cast<std::uint64_t>(position);
    return OPJ_TRUE;
}

} // namespace kestrine::jp2
