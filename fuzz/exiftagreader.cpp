// Whatever the file: the reader keeps to its limits and raises nothing but the platform's exceptions.
#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "platform/foundation/NSException.h"

#include <cstdlib>
#include <fstream>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrine;
    static const std::string path = "/tmp/kestrine-fuzz-" + std::to_string(::getpid()) + ".jpg";
    [[maybe_unused]] static const int registered = std::atexit([] { ::unlink(path.c_str()); });
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(data), std::streamsize(size));

    const auto reader = ExifTagReader::initWithPath(NSString::fromUTF8(path));
    const TagDictionaryPointer tags = reader->tagDictionary();
    if (tags && tags->size() > 5)
        std::abort();
    for (const auto& directory : {reader->IFD0Dict(), reader->IFD1Dict(), reader->subIFDDict()})
        if (directory && directory->size() > 299)
            std::abort();
    try {
        (void)reader->imageDirectionNumber();
    } catch (const NSException& raised) {
        if (raised.name() != NSInvalidArgumentException)
            std::abort();
    }
    return 0;
}
