#include "platform/imageio/svg/Zlib.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::svg {

Result<Zlib> loadZlib(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<Zlib>(names, missingMessage("compressed drawings need zlib", OnDemand::zlib),
                                      [](const DynamicLibrary& library, Zlib& functions) {
                                          return library.find(functions.startInflate, "inflateInit2_")
                                                 && library.find(functions.inflate, "inflate")
                                                 && library.find(functions.endInflate, "inflateEnd");
                                      });
}

const Result<Zlib>& installedZlib() {
    static const Result<Zlib> functions = loadZlib({systemLibrary(OnDemand::zlib).file});
    return functions;
}

InflateStream::InflateStream(int windowBits) {
    isReady_ = installedZlib()
               && installedZlib()->startInflate(&stream_, windowBits, ZLIB_VERSION, sizeof stream_) == Z_OK;
}

InflateStream::~InflateStream() {
    if (isReady_)
        installedZlib()->endInflate(&stream_);
}

int InflateStream::inflate(int flush) { return installedZlib()->inflate(&stream_, flush); }

} // namespace kestrine::svg
