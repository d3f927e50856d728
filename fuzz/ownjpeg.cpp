// Compares our own JPEG decoder with libjpeg-turbo: at every scale, both give the same rows or both fail. Of
// progressive files both also report the same damage; of others ours reports more.
#include "fuzz/DecodeEverything.h"
#include "platform/imageio/jpeg/Decoder.h"

#include <cstdlib>
#include <string>

namespace {

using namespace kestrine;

struct Decoded {
    Bytes rows;         ///< all of them; empty on failure and for pictures that would take too long
    std::string damage; ///< of progressive files

    bool operator==(const Decoded&) const = default;
};

Decoded decoded(const Bytes& file, jpeg::DecoderChoice choice, int halvings) {
    constexpr std::uint64_t affordablePixels = 1 << 18;
    const auto decoder = jpeg::openDecoder(readerOfBytes(file), choice);
    if (!decoder || (*decoder)->frames().front().format.pixels() > affordablePixels)
        return {};
    const auto rows = (*decoder)->rows(0, halvings);
    Result<PixelBuffer> pixels = rows ? readAllRows(**rows) : Result<PixelBuffer>(rows.failure());
    if (!pixels)
        return {};
    const bool isProgressive = (*decoder)->frames().front().heldBytes != 0;
    const std::optional<Failure> damage = isProgressive ? (*decoder)->damage() : std::nullopt;
    return {std::move(pixels->bytes), damage ? damage->text : ""};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes file(data, data + size);
    if (!kestrine::jpeg::codec.recognises(kestrine::ByteView(file).first(std::min<std::size_t>(size, 64))))
        return 0;
    for (const int halvings : {0, 1, 2, 3}) {
        if (decoded(file, jpeg::DecoderChoice::ownFirst, halvings)
            != decoded(file, jpeg::DecoderChoice::libraryOnly, halvings))
            std::abort();
    }
    return 0;
}
