// Unarchives any bytes. What can be read can be archived, and reading and archiving that again gives the same
// bytes.
#include "fuzz/Require.h"
#include "platform/foundation/archiving/ArchivedFields.h"

namespace {

using namespace kestrine;
using fuzzing::require;

struct ResizeSet final : NSObject {
    OptionalString name;
    std::int8_t replaceFile = 0;
    std::int32_t resizeType = 0;
    float height = 0;
    std::int8_t highQuality = 1;

    static const ArchivedField<ResizeSet> fields[5];

    void encodeWithCoder(NSArchiver& coder) const { encodeFields<ResizeSet>(coder, *this, fields); }
    static std::shared_ptr<const ResizeSet> initWithCoder(NSUnarchiver& coder) {
        auto set = std::make_shared<ResizeSet>();
        decodeFields<ResizeSet>(coder, *set, fields, coder.versionForClassName("ResizeSet"));
        return set;
    }
};

constexpr ArchivedField<ResizeSet> ResizeSet::fields[5] = {
    {"name", &ResizeSet::name},
    {"replaceFile", &ResizeSet::replaceFile},
    {"resizeType", &ResizeSet::resizeType},
    {"height", &ResizeSet::height},
    {"highQuality", &ResizeSet::highQuality, 4},
};

constexpr ArchivedClass classes[] = {archivedClass<ResizeSet>("ResizeSet", 4)};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Result<Object> first = NSUnarchiver::unarchiveObjectWithData({data, size}, classes);
    if (!first) {
        return 0;
    }
    const auto written = NSArchiver::archivedDataWithRootObject(*first, classes);
    if (!written) {
        // The only object that can be read but not archived: an index set beyond 32 bits.
        require(written.failure().reason == Reason::tooLarge);
        return 0;
    }
    const Result<Object> second = NSUnarchiver::unarchiveObjectWithData((*written)->bytes(), classes);
    require(second.ok());
    const auto rewritten = NSArchiver::archivedDataWithRootObject(*second, classes);
    require(rewritten.ok() && (*rewritten)->bytes() == (*written)->bytes());
    return 0;
}
