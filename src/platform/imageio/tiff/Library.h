// libtiff, loaded when the first TIFF file needs it: its functions as a table, and one open input.
// Its header is used for types only; nothing here links to it.
#pragma once

#include "platform/host/files/ByteReader.h"
#include "platform/imageio/DamageRecord.h"

#include <initializer_list>
#include <tiffio.h>

namespace kestrine::tiff {

/// The functions used, named as in libtiff without "TIFF". A block is a strip or tile.
struct Functions {
    decltype(&TIFFOpenOptionsAlloc) allocateOptions;
    decltype(&TIFFOpenOptionsFree) freeOptions;
    decltype(&TIFFOpenOptionsSetMaxSingleMemAlloc) setMaximumAllocation;
    decltype(&TIFFOpenOptionsSetErrorHandlerExtR) setErrorHandler;
    decltype(&TIFFOpenOptionsSetWarningHandlerExtR) setWarningHandler;
    decltype(&TIFFClientOpenExt) clientOpen;
    decltype(&TIFFClose) close;
    decltype(&TIFFSetSubDirectory) setDirectory;
    decltype(&TIFFGetField) getField;
    decltype(&TIFFGetFieldDefaulted) getFieldDefaulted;
    decltype(&TIFFSetField) setField;
    decltype(&TIFFIsCODECConfigured) isCodecConfigured;
    decltype(&TIFFIsTiled) isTiled;
    decltype(&TIFFScanlineSize64) scanlineSize;
    decltype(&TIFFStripSize64) stripSize;
    decltype(&TIFFTileSize64) tileSize;
    decltype(&TIFFTileRowSize64) tileRowSize;
    decltype(&TIFFComputeStrip) computeStrip;
    decltype(&TIFFComputeTile) computeTile;
    decltype(&TIFFGetStrileOffset) blockOffset;
    decltype(&TIFFGetStrileByteCount) blockByteCount;
    decltype(&TIFFIsByteSwapped) isByteSwapped;
    decltype(&TIFFReadScanline) readScanline;
    decltype(&TIFFReadEncodedStrip) readEncodedStrip;
    decltype(&TIFFReadEncodedTile) readEncodedTile;
    decltype(&TIFFRGBAImageOK) canRender;
    decltype(&TIFFReadRGBAStripExt) renderStrip;
    decltype(&TIFFReadRGBATileExt) renderTile;
};

/// The functions of the first of `libraries` that can be loaded. Without one, fails as "unsupported" and
/// names the package.
Result<Functions> loadFunctions(std::initializer_list<const char*> libraries);

/// The functions of the system's libtiff, looked up once.
const Result<Functions>& tiffFunctions();

/// What is read, and where invented pixels are recorded.
struct Input {
    std::shared_ptr<const ByteReader> reader;
    std::shared_ptr<DamageRecord> damage;
};

/// libtiff at one directory of an input. Prints no messages. Only one thread may use it at a time.
class File {
public:
    /// Fails as tiffFunctions() does, or when the input or the directory is invalid.
    static Result<std::unique_ptr<File>> open(const Input& input, std::uint64_t directory);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const Functions& library() const { return library_; }
    TIFF* handle() const { return handle_; }
    /// Size of the whole input in bytes.
    std::uint64_t size() const { return input_.reader->size(); }
    /// Fills `into` with the bytes of the input from `offset`. Returns false when it ends before that.
    bool readAt(std::uint64_t offset, std::span<std::uint8_t> into) const {
        return input_.reader->readAt(offset, into) == into.size();
    }

    /// The value of a tag that holds one number, or libtiff's default for it, or `absent`.
    std::uint16_t shortNumber(std::uint32_t tag, std::uint16_t absent) const;
    std::uint32_t longNumber(std::uint32_t tag, std::uint32_t absent) const;
    float realNumber(std::uint32_t tag, float absent) const;

    /// The failure of the last call, with libtiff's message.
    Failure failure() const;

private:
    File(const Input& input, const Functions& library);

    template <class Number>
    Number number(std::uint32_t tag, Number absent) const;
    void openInput();

    static tmsize_t read(thandle_t file, void* into, tmsize_t count);
    static toff_t seek(thandle_t file, toff_t offset, int whence);
    static int keepError(TIFF*, void* file, const char* module, const char* format, va_list arguments);
    static int keepWarning(TIFF*, void* file, const char* module, const char* format, va_list arguments);
    void noteDamage(const char* module, const char* text) const;

    const Functions& library_;
    const Input input_;
    std::uint64_t position_ = 0;
    bool endedEarly_ = false; ///< whether a read went beyond the end of the input
    char message_[200] = "";
    TIFF* handle_ = nullptr;
};

} // namespace kestrine::tiff
