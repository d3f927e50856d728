#include "platform/imageio/tiff/Library.h"
#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace kestrine::tiff {

namespace {

/// Limit for one allocation by libtiff: the compressed bytes of a strip or tile, or the samples of a tile.
constexpr tmsize_t maximumAllocation = tmsize_t{1} << 30;

/// Returned to libtiff: the message needs no other handler.
constexpr int isHandled = 1;

/// Whether a message means that libtiff invented pixels. Most of its decoders fail at damaged data; those of
/// fax and JPEG repair what they can and continue.
bool tellsOfMadeUpPixels(std::string_view module, std::string_view text) {
    if (module.starts_with("Fax3") || module.starts_with("Fax4"))
        return true;
    const bool isJPEG = module == "JPEGLib" || module == "LibJpeg";
    return isJPEG && (text.starts_with("Corrupt JPEG data") || text.starts_with("Premature end"))
           && text.find("extraneous") == std::string_view::npos;
}

} // namespace

Result<Functions> loadFunctions(std::initializer_list<const char*> libraries) {
    return DynamicLibrary::load<Functions>(
        libraries, missingMessage("TIFF pictures need libtiff 4.5 or later", OnDemand::tiff),
        [](const DynamicLibrary& library, Functions& functions) {
            return library.find(functions.allocateOptions, "TIFFOpenOptionsAlloc")
                   && library.find(functions.freeOptions, "TIFFOpenOptionsFree")
                   && library.find(functions.setMaximumAllocation, "TIFFOpenOptionsSetMaxSingleMemAlloc")
                   && library.find(functions.setErrorHandler, "TIFFOpenOptionsSetErrorHandlerExtR")
                   && library.find(functions.setWarningHandler, "TIFFOpenOptionsSetWarningHandlerExtR")
                   && library.find(functions.clientOpen, "TIFFClientOpenExt")
                   && library.find(functions.close, "TIFFClose")
                   && library.find(functions.setDirectory, "TIFFSetSubDirectory")
                   && library.find(functions.getField, "TIFFGetField")
                   && library.find(functions.getFieldDefaulted, "TIFFGetFieldDefaulted")
                   && library.find(functions.setField, "TIFFSetField")
                   && library.find(functions.isCodecConfigured, "TIFFIsCODECConfigured")
                   && library.find(functions.isTiled, "TIFFIsTiled")
                   && library.find(functions.scanlineSize, "TIFFScanlineSize64")
                   && library.find(functions.stripSize, "TIFFStripSize64")
                   && library.find(functions.tileSize, "TIFFTileSize64")
                   && library.find(functions.tileRowSize, "TIFFTileRowSize64")
                   && library.find(functions.computeStrip, "TIFFComputeStrip")
                   && library.find(functions.computeTile, "TIFFComputeTile")
                   && library.find(functions.blockOffset, "TIFFGetStrileOffset")
                   && library.find(functions.blockByteCount, "TIFFGetStrileByteCount")
                   && library.find(functions.isByteSwapped, "TIFFIsByteSwapped")
                   && library.find(functions.readScanline, "TIFFReadScanline")
                   && library.find(functions.readEncodedStrip, "TIFFReadEncodedStrip")
                   && library.find(functions.readEncodedTile, "TIFFReadEncodedTile")
                   && library.find(functions.canRender, "TIFFRGBAImageOK")
                   && library.find(functions.renderStrip, "TIFFReadRGBAStripExt")
                   && library.find(functions.renderTile, "TIFFReadRGBATileExt");
        });
}

const Result<Functions>& tiffFunctions() {
    static const Result<Functions> functions = loadFunctions({systemLibrary(OnDemand::tiff).file});
    return functions;
}

Result<std::unique_ptr<File>> File::open(const Input& input, std::uint64_t directory) {
    const Result<Functions>& functions = tiffFunctions();
    if (!functions)
        return functions.failure();
    std::unique_ptr<File> file(new File(input, *functions));
    file->openInput();
    if (!file->handle_ || !file->library_.setDirectory(file->handle_, directory))
        return file->failure();
    return file;
}

File::File(const Input& input, const Functions& library) : library_(library), input_(input) {}

File::~File() {
    if (handle_)
        library_.close(handle_);
}

void File::openInput() {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(library_.allocateOptions(),
                                                                                   library_.freeOptions);
    if (!options)
        return;
    library_.setMaximumAllocation(options.get(), maximumAllocation);
    library_.setErrorHandler(options.get(), keepError, this);
    library_.setWarningHandler(options.get(), keepWarning, this);
    const auto write = [](thandle_t, void*, tmsize_t) -> tmsize_t { return -1; };
    const auto close = [](thandle_t) { return 0; };
    const auto sizeOf = [](thandle_t file) { return toff_t{static_cast<File*>(file)->size()}; };
    constexpr const char* readHeaderOnlyWithoutMapping = "rhm";
    handle_ = library_.clientOpen("picture", readHeaderOnlyWithoutMapping, this, read, write, seek, close,
                                  sizeOf, nullptr, nullptr, options.get());
}

tmsize_t File::read(thandle_t file, void* into, tmsize_t count) {
    auto& self = *static_cast<File*>(file);
    if (count < 0)
        return -1;
    const std::span<std::uint8_t> bytes(static_cast<std::uint8_t*>(into), static_cast<std::size_t>(count));
    const std::size_t got = self.input_.reader->readAt(self.position_, bytes);
    self.position_ += got;
    self.endedEarly_ = self.endedEarly_ || got < bytes.size();
    return static_cast<tmsize_t>(got);
}

toff_t File::seek(thandle_t file, toff_t offset, int whence) {
    auto& self = *static_cast<File*>(file);
    const std::uint64_t base = whence == SEEK_CUR ? self.position_ : whence == SEEK_END ? self.size() : 0;
    return self.position_ = base + offset;
}

int File::keepError(TIFF*, void* file, const char* module, const char* format, va_list arguments) {
    auto& self = *static_cast<File*>(file);
    std::vsnprintf(self.message_, sizeof self.message_, format, arguments);
    self.noteDamage(module, self.message_);
    return isHandled;
}

int File::keepWarning(TIFF*, void* file, const char* module, const char* format, va_list arguments) {
    char text[sizeof message_];
    std::vsnprintf(text, sizeof text, format, arguments);
    static_cast<File*>(file)->noteDamage(module, text);
    return isHandled;
}

void File::noteDamage(const char* module, const char* text) const {
    if (module != nullptr && tellsOfMadeUpPixels(module, text))
        input_.damage->note({Reason::malformed, std::string("the TIFF picture is damaged: ") + text});
}

template <class Number>
Number File::number(std::uint32_t tag, Number absent) const {
    Number value{};
    return library_.getFieldDefaulted(handle_, tag, &value) ? value : absent;
}

std::uint16_t File::shortNumber(std::uint32_t tag, std::uint16_t absent) const { return number(tag, absent); }
std::uint32_t File::longNumber(std::uint32_t tag, std::uint32_t absent) const { return number(tag, absent); }
float File::realNumber(std::uint32_t tag, float absent) const { return number(tag, absent); }

Failure File::failure() const {
    if (endedEarly_)
        return {Reason::truncated, "the TIFF file ends too early"};
    std::string text = std::string("the TIFF picture cannot be read: ") + message_;
    std::replace(text.begin(), text.end(), '\n', ' ');
    return {Reason::malformed, std::move(text)};
}

} // namespace kestrine::tiff
