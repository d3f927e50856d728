// Reads any bytes as a picture file with EXIF. The reader must keep its limits, every accessor of the table
// must return or raise one of the two allowed exceptions, and a display accessor must give a string exactly
// if its value accessor has a value.
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "fuzz/Require.h"
#include "platform/foundation/NSException.h"

#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace {

using namespace kestrine;
using fuzzing::require;

/// Whether `accessor` returns. If not, it must raise an allowed exception.
template <class Accessor>
bool answers(Accessor accessor) {
    try {
        accessor();
        return true;
    } catch (const NSException& raised) {
        if (raised.name() != NSInvalidArgumentException && raised.name() != NSRangeException)
            std::abort();
        return false;
    }
}

/// Both must raise, or both must return: `display` "N/A" for nil, otherwise a string that is not empty.
template <class Value, class Display>
void requireDisplayOf(Value value, Display display) {
    bool isNil = false;
    NSString text;
    const bool hasAnswer = answers([&] { isNil = !value(); });
    require(answers([&] { text = display(); }) == hasAnswer);
    require(!hasAnswer || (isNil ? text == u"N/A" : !text.isEmpty()));
}

void walkAccessors(ExifTagReader& reader) {
#define VALUE(name, directory, tag, rule, Kind) (void)answers([&] { (void)reader.name(); });
#define FORMATTED(name, valueAccessor, format, valueFormatted)                                               \
    requireDisplayOf([&] { return reader.valueAccessor(); }, [&] { return reader.name(); });
#define LOCALIZED(name, valueAccessor, key)                                                                  \
    requireDisplayOf([&] { return reader.valueAccessor(); }, [&] { return reader.name(); });
#define COMPUTED(name) (void)answers([&] { require(!reader.name().isEmpty()); });
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
    (void)answers([&] { require(!reader.tagDescription().isEmpty()); });
    (void)answers([&] { (void)reader.correctedCreationDate(); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = "/tmp/kestrine-fuzz-" + std::to_string(::getpid()) + ".jpg";
    [[maybe_unused]] static const int registered = std::atexit([] { ::unlink(path.c_str()); });
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(data), std::streamsize(size));

    const auto reader = ExifTagReader::initWithPath(NSString::fromUTF8(path));
    const TagDictionaryPointer tags = reader->tagDictionary();
    require(!tags || tags->size() <= 5);
    for (const auto& directory : {reader->IFD0Dict(), reader->IFD1Dict(), reader->subIFDDict()})
        require(!directory || directory->size() <= 299);
    walkAccessors(*reader);
    return 0;
}
