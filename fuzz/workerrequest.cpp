// Reads any bytes as a request to a worker, and carries out what is accepted for a small picture. Requests
// for large results are only read.
#include "fuzz/Require.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/worker/Service.h"

#include <unistd.h>

namespace {

using namespace kestrine;
using fuzzing::require;
using namespace kestrine::worker;

Bytes pictureFile() {
    auto pixels =
        std::make_shared<PixelBuffer>(RowFormat{24, 16, ColorModel::rgb, false, SampleDepth::bits8});
    for (std::size_t i = 0; i < pixels->bytes.size(); ++i)
        pixels->bytes[i] = static_cast<std::uint8_t>(i * 7);
    return *encoded(jpeg::encode, *rowsOfPixels(pixels), {.quality = 0.9});
}

Result<Bytes> size(const std::shared_ptr<const ByteReader>& file) {
    return Bytes{static_cast<std::uint8_t>(file->size())};
}
constexpr FileQuestion questions[] = {size};

/// Whether no step gives more than a thousand pixels a side.
bool isSmall(const Recipe& recipe) {
    constexpr std::uint32_t side = 1000;
    if (recipe.canvas && (recipe.canvas->width > side || recipe.canvas->height > side))
        return false;
    for (const PictureStep& step : recipe.steps)
        if (const auto* resampling = std::get_if<Resampling>(&step))
            if (resampling->x.outSize > side || resampling->y.outSize > side)
                return false;
    return recipe.steps.size() <= 8;
}

bool isSmall(const Request& request) {
    if (const auto* render = std::get_if<RenderFile>(&request.order))
        return isSmall(render->picture);
    if (const auto* pixels = std::get_if<ReadPixels>(&request.order))
        return isSmall(pixels->picture);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView input(data, size);
    std::optional<Request> request = requestIn(input);
    if (!request)
        return 0;
    const Bytes again = bytesOf(*request);
    require(std::equal(again.begin(), again.end(), input.begin(), input.end()));
    if (!isSmall(*request))
        return 0;
    static const MemoryFile file = [] {
        MemoryFile memory = *MemoryFile::create();
        require(memory.write(pictureFile(), 0).ok());
        return memory;
    }();
    request->source = 1;
    request->fileBytes = pictureFile().size();
    request->maximumPixels = defaultMaximumPixels;
    request->usesOneThread = true;
    request->codec = numberOf(jpeg::codec);
    Service service(questions);
    (void)service.responseTo(*request, FileDescriptor(::dup(file.number())), FileDescriptor());
    return 0;
}
