#include "platform/imageio/png/LibraryReader.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace kestrine::png {

namespace {

constexpr png_alloc_size_t maximumChunkBytes = 16 << 20;

constexpr std::size_t compressedBytesAtOnce = 512;

constexpr std::size_t chunkNameBytes = 5;
/// The chunks that libpng would interpret but that are not used here, in the form that libpng expects: each
/// name with a zero after it. libpng then skips them; otherwise it would inflate every text of a file.
constexpr std::string_view skippedChunks{"bKGD\0eXIf\0hIST\0iTXt\0oFFs\0pCAL\0sBIT\0sCAL\0sPLT\0"
                                         "tEXt\0tIME\0zTXt\0",
                                         12 * chunkNameBytes};
constexpr std::string_view calibrationChunks{"cHRM\0gAMA\0sRGB\0", 3 * chunkNameBytes};

void skipChunks(png_structp png, std::string_view names) {
    libpng().setKeepUnknownChunks(png, PNG_HANDLE_CHUNK_NEVER,
                                  reinterpret_cast<png_const_bytep>(names.data()),
                                  static_cast<int>(names.size() / chunkNameBytes));
}

/// Length and type of the first IDAT chunk, which libpng().readInfo() has already read.
constexpr std::uint64_t chunkHeadBytes = 8;

void readInput(png_structp png, png_bytep into, std::size_t count) {
    if (static_cast<ForwardReader*>(libpng().getIoPtr(png))->read({into, count}) < count)
        libpng().fail(png, "the file ends too early");
}

} // namespace

LibraryReader::LibraryReader(std::shared_ptr<const ByteReader> reader, Calibration calibration)
    : calibration_(calibration), input_(std::move(reader), 0, bufferBytes) {
    if (installedFunctions())
        png_ = libpng().createReadStruct(PNG_LIBPNG_VER_STRING, &message_, jumpOnError, keepWarning);
    info_ = png_ ? libpng().createInfoStruct(png_) : nullptr;
}

LibraryReader::~LibraryReader() {
    if (png_ != nullptr)
        libpng().destroyReadStruct(&png_, &info_, nullptr);
}

Result<void> LibraryReader::readHeader() {
    if (!installedFunctions())
        return installedFunctions().failure();
    if (!info_)
        return Failure{Reason::unsupported, "libpng cannot be used"};
    return run([this] {
        libpng().setReadFn(png_, &input_, readInput);
        // If a file ends too early, fewer compressed bytes than this are lost.
        libpng().setCompressionBufferSize(png_, compressedBytesAtOnce);
        libpng().setUserLimits(png_, maximumSide, maximumSide);
        libpng().setMaxChunkBytes(png_, maximumChunkBytes);
        skipChunks(png_, skippedChunks);
        if (calibration_ == Calibration::skipped)
            skipChunks(png_, calibrationChunks);
        libpng().readInfo(png_, info_);
        storedColorType_ = libpng().getColorType(png_, info_);
        storedRowBytes_ = libpng().getRowbytes(png_, info_);
        storedBitsPerPixel_ =
            std::size_t{libpng().getChannels(png_, info_)} * libpng().getBitDepth(png_, info_);
        readAlphaOfIndices();
        offsetOfPixels_ = input_.offset() - chunkHeadBytes;
        libpng().setExpand(png_);
        if constexpr (std::endian::native == std::endian::little)
            libpng().setSwap(png_);
        libpng().readUpdateInfo(png_, info_);
    });
}

void LibraryReader::readAlphaOfIndices() {
    alphaOfIndices_.fill(255);
    png_bytep alpha = nullptr;
    int count = 0;
    if (isIndexed() && libpng().getTRNS(png_, info_, &alpha, &count, nullptr) && alpha)
        std::copy_n(alpha, count, alphaOfIndices_.begin());
}

RowFormat LibraryReader::format() const {
    const std::uint8_t type = libpng().getColorType(png_, info_);
    return {.width = libpng().getImageWidth(png_, info_),
            .height = libpng().getImageHeight(png_, info_),
            .model = type & PNG_COLOR_MASK_COLOR ? ColorModel::rgb : ColorModel::gray,
            .hasAlpha = (type & PNG_COLOR_MASK_ALPHA) != 0,
            .depth = libpng().getBitDepth(png_, info_) == 16 ? SampleDepth::bits16 : SampleDepth::bits8};
}

bool LibraryReader::isInterlaced() const {
    return libpng().getInterlaceType(png_, info_) != PNG_INTERLACE_NONE;
}

bool LibraryReader::deliversAsStored() const {
    return !isIndexed() && storedBitsPerPixel_ == 8 * format().bytesPerPixel();
}

std::uint64_t LibraryReader::storedBytes() const {
    return (storedRowBytes_ + 1) * libpng().getImageHeight(png_, info_);
}

Result<void> LibraryReader::readRow(std::span<std::uint8_t> row) {
    return run([&] { libpng().readRow(png_, row.data(), nullptr); });
}

Result<void> LibraryReader::finish() {
    return run([this] { libpng().readEnd(png_, nullptr); });
}

template <class Step>
Result<void> LibraryReader::run(const Step& step) {
    if (succeedsInLibrary(png_, step))
        return {};
    return Failure{input_.endedEarly() ? Reason::truncated : Reason::malformed,
                   std::string("the PNG picture cannot be read: ") + message_.text};
}

} // namespace kestrine::png
