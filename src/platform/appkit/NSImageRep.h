// Image representations: one way in which an NSImage can be drawn or encoded.
#pragma once

#include "platform/coreimage/CIImage.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/text/NSString.h"
#include "platform/imageio/Render.h"

#include <map>

namespace kestrine {

/// The pixels never change; the size in points may.
class NSImageRep : public NSObject {
public:
    const Picture& picture() const { return picture_; }
    int pixelsWide() const { return static_cast<int>(picture_.width()); }
    int pixelsHigh() const { return static_cast<int>(picture_.height()); }

    NSSize size() const { return size_; }
    void setSize(NSSize size) { size_ = size; }

protected:
    NSImageRep(Picture picture, NSSize size) : picture_(std::move(picture)), size_(size) {}

private:
    const Picture picture_;
    NSSize size_;
};

/// Names of the properties of encoders and bitmaps.
inline constexpr const char16_t* NSImageCompressionFactor =
    u"NSImageCompressionFactor"; ///< NSNumber, 0 to 1 (JPEG)
inline constexpr const char16_t* NSImageDitherTransparency =
    u"NSImageDitherTransparency"; ///< NSNumber, boolean (GIF)
inline constexpr const char16_t* NSImageColorSyncProfileData =
    u"NSImageColorSyncProfileData"; ///< NSData, an ICC profile
inline constexpr const char16_t* NSImageEXIFData =
    u"NSImageEXIFData"; ///< NSData, the source's EXIF block from its TIFF header on
inline constexpr const char16_t* NSImageRGBColorTable =
    u"NSImageRGBColorTable"; ///< NSData, red, green, blue per colour

using ImageProperties = std::map<NSString, Object>;

/// A property that stands for its bytes: the encoder takes them from the file where it is decoded, so that
/// this process need not read them. As NSImageColorSyncProfileData it means the profile of the bitmap that is
/// encoded, as NSImageEXIFData the EXIF block of `source`.
class PropertyOfSource final : public NSObject {
public:
    explicit PropertyOfSource(std::shared_ptr<Source> file) : source(std::move(file)) {}

    const std::shared_ptr<Source> source;
};

/// What a file is to be made like, beyond the published properties.
struct EncodingRules {
    ExifSelection exif = ExifSelection::camera; ///< how much is kept of the EXIF block of a PropertyOfSource
    std::uint64_t maxBytes = 0;                 ///< see Output::maxBytes
    bool isLossless = false;                    ///< see EncodingOptions::isLossless
    bool isProgressive = false;                 ///< see EncodingOptions::isProgressive
    Effort effort = Effort::normal;             ///< see EncodingOptions::effort
};

class NSBitmapImageRep final : public NSImageRep {
public:
    NSBitmapImageRep(Picture picture, NSSize size) : NSImageRep(std::move(picture), size) {}

    /// `imageRepsWithContentsOfFile:`: one for each picture in the file: the main one, the others in stored
    /// order, reduced copies last. None when the file cannot be opened or its header is not that of a
    /// picture. The size in points follows the resolution.
    static std::vector<std::shared_ptr<NSBitmapImageRep>> imageRepsWithContentsOfFile(const NSString& path);
    /// The same for a file that is open already.
    static std::vector<std::shared_ptr<NSBitmapImageRep>>
    imageRepsWithSource(const std::shared_ptr<Source>& source);

    /// `valueForProperty:`: the profile and, for the unchanged bitmap of a file, its EXIF block and colour
    /// table; nil when there is none.
    Object valueForProperty(const NSString& name) const;

    /// `representationUsingType:properties:`: the file's bytes; nil when it cannot be made.
    std::shared_ptr<const NSData> representationUsingType(FileType type, const ImageProperties& properties,
                                                          const EncodingRules& rules = {}) const;

    /// The same into `file`, a descriptor of an empty file that is open for writing. False when the file
    /// cannot be made; its content is then of no use.
    bool writeRepresentation(int file, FileType type, const ImageProperties& properties,
                             const EncodingRules& rules = {}) const;

    /// `bitmapData`: a copy of the pixels, row by row from the top without padding, in the picture's depth;
    /// colour is multiplied by alpha, which is last. nil when they cannot be read.
    std::shared_ptr<const NSData> bitmapData() const;
};

class NSCIImageRep final : public NSImageRep {
public:
    /// `imageRepWithCIImage:`: one point per pixel.
    explicit NSCIImageRep(const CIImage& image)
        : NSImageRep(image.picture(),
                     {static_cast<float>(image.extent().width), static_cast<float>(image.extent().height)}) {}
};

} // namespace kestrine
