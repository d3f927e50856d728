// Render: makes the file or the pixels of a Picture. Nothing else decodes pictures.
#pragma once

#include "platform/imageio/OutputFormats.h"
#include "platform/imageio/Picture.h"
#include "platform/imageio/exif/CarriedExif.h"

namespace kestrine {

/// Properties that the result keeps from the source file, so that their bytes need not leave the process that
/// decodes. They take precedence over the options of the same name.
struct KeptProperties {
    bool profile = false;         ///< the profile of the picture
    std::shared_ptr<Source> exif; ///< the picture's source, or any source for an empty canvas; null: no EXIF
    ExifSelection exifSelection = ExifSelection::camera; ///< how much of it
};

/// The kind of file to make. `options.exif` is the whole EXIF block of the source; render() selects and
/// updates what goes into the file.
struct Output {
    FileType type;
    EncodingOptions options;
    KeptProperties kept = {};
    /// Chooses the highest quality up to that of the options with which the file has at most so many bytes.
    /// 0 for any size. Fails with reason "tooLarge" if no quality is low enough.
    std::uint64_t maxBytes = 0;
};

/// The finished file. Any thread; several threads at once if their pictures have different sources, or
/// sources that keep their pixels.
Result<Bytes> render(const Picture& picture, const Output& output);

/// The same into `file`, a descriptor of an empty file that is open for writing. So no process holds the
/// whole result in memory, unless the format's encoder does. After a failure the content of the file is of no
/// use.
Result<void> renderInto(int file, const Picture& picture, const Output& output);

/// The picture's pixels, in its format().
Result<PixelBuffer> readPixels(const Picture& picture);

/// The memory for whole pictures that decoding and turning need, in bytes. All of it must be reserved in one
/// step, because a job must not wait for memory while it holds some. `isDecoded`: the pixels of the source
/// are in memory already. `holdsResult`: those of the result are kept.
std::uint64_t bytesToHold(const Picture& picture, bool keeps16Bits, bool isDecoded, bool holdsResult = false);

/// The same for render() and renderInto(); includes the memory of the encoder.
std::uint64_t bytesToEncode(const Picture& picture, const Output& output, bool isDecoded);

/// The steps of a picture in an order that suits rows: first all other steps, in the orientation of the
/// source, then one mirroring and one turn.
struct RowPlan {
    std::vector<PictureStep> steps; ///< without any QuarterTurn or Mirror
    bool isMirrored = false;        ///< left and right are exchanged before the turn
    int quarterTurns = 0;           ///< clockwise, 0 to 3

    bool operator==(const RowPlan&) const = default;
};
RowPlan planRows(const Picture& picture);

/// How often the sides of the source may be halved while it is decoded for `resampling`. Along the axis
/// that is reduced least, the filter must still reduce by at least 2.35 (lanczos; the result then differs
/// from that of a full decode by 52 dB) or 2 (triangle).
int decodingHalvings(const Resampling& resampling, int maxHalvings);

} // namespace kestrine
