// Reads any bytes as the response of a worker. What is accepted is within the limits, and writing and reading
// it again gives the same.
#include "fuzz/Require.h"
#include "platform/imageio/worker/Messages.h"
#include "platform/imageio/worker/Parcel.h"

#include <algorithm>

namespace {

using namespace kestrine;
using fuzzing::require;
using namespace kestrine::worker;

bool isPrintable(const Failure& failure) {
    return failure.text.size() <= maxFailureText
           && std::ranges::none_of(failure.text, [](unsigned char c) { return c < ' ' || c == 0x7f; });
}

void check(const Response& response) {
    for (const FrameDescription& frame : response.frames)
        require(frame.format.isWithinLimits() && frame.format.channels() <= 4
                && frame.resolution.vertical > 0);
    require(!response.damage || isPrintable(*response.damage));
    require(response.content || isPrintable(response.content.failure()));
    const Bytes bytes = bytesOf(response);
    const std::optional<Response> again = responseIn(bytes, {});
    require(again && bytesOf(*again) == bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFile shared = *MemoryFile::create();
    constexpr std::uint64_t maxContent = 1000;
    const ByteView input(data, size);
    if (const Result<Parcel> parcel = unpacked(input, shared, maxContent)) {
        require(parcel->content.size() <= maxContent);
        (void)responseIn(parcel->head, {});
    }
    if (const std::optional<Response> response = responseIn(input, {}))
        check(*response);
    return 0;
}
