// The extension group `myUtility` on NSImage: scaling, resolution, rotation, encoding with metadata; and two
// functions that convert Core Image results to images and bitmaps. Operations that return an image take the
// receiver as a pointer, because some return the receiver itself.
#pragma once

#include "_MyClasses/Category/PictureFile.h"
#include "platform/appkit/NSImage.h"

#include <vector>

namespace kestrine {

/// `NSImageRepWithCImage`: a new image with one NSCIImageRep; its size in points is the size of `image` in
/// pixels.
std::shared_ptr<NSImage> NSImageRepWithCImage(const CIImage& image);

/// `RGBABitmapImageRepWithCImage`: a new bitmap with 8-bit red, green, blue and alpha samples in generic RGB;
/// its size in points is the size of `image` in pixels. The pixels are rendered on first use; bitmapData is
/// nil when the picture cannot be decoded.
std::shared_ptr<NSBitmapImageRep> RGBABitmapImageRepWithCImage(const CIImage& image);

} // namespace kestrine

namespace kestrine::myUtility {

using ImagePointer = std::shared_ptr<NSImage>;
using DataPointer = std::shared_ptr<const NSData>;

// For all operations: a nil receiver gives nil. Changing the receiver later does not change images made from
// it. Nothing is decoded here; a picture that cannot be decoded gives no data when it is encoded. Exceptions
// are documented where they are raised.

// Scaling. Lengths and sizes are in points and are neither rounded nor checked; zero, infinite and NaN values
// are passed on to the drawing or filter functions. HQ selects the Lanczos filter (resizedImageWithSizeHQ)
// and is the default; without it the image is drawn plainly (resizedImageWithSize). The receiver is never
// changed.

/// `resizedImageWithRatio:`, `resizedImageWithRatio:HQ:`: a new image of `ratio` times the receiver's size;
/// 0.5 halves both sides. A ratio of exactly 100 gives the receiver itself; a ratio of 1 does not.
ImagePointer resizedImageWithRatio(const ImagePointer& image, float ratio, bool HQ = true);

/// `resizedImageWithWidthRatio:`, `resizedImageWithWidthRatio:HQ:`: scales to a width in points (despite the
/// name) and keeps the aspect ratio. The receiver itself when it has this width, or when the ratio of the
/// widths is exactly 100.
ImagePointer resizedImageWithWidthRatio(const ImagePointer& image, float width, bool HQ = true);

/// `resizedImageWithHeightRatio:`, `resizedImageWithHeightRatio:HQ:`: the same for a height.
ImagePointer resizedImageWithHeightRatio(const ImagePointer& image, float height, bool HQ = true);

/// `resizedImageWithMaxSize:`, `resizedImageWithMaxSize:HQ:`: scales the longer side to `longestSide` plus
/// the value of HQ, so one point more in high quality. Any HQ but 0 is high quality. The longer side is the
/// height in a square, and the width when a side is NaN.
ImagePointer resizedImageWithMaxSize(const ImagePointer& image, float longestSide, signed char HQ = 1);

/// `resizedImageWithSize:`: draws plainly into a new image of exactly this size, with any aspect ratio. The
/// new image has no representation when the size is not drawable (see drawnImage).
ImagePointer resizedImageWithSize(const ImagePointer& image, NSSize size);

/// `resizedImageWithSizeHQ:`: scales the receiver's pixels with the Lanczos filter to one pixel more in each
/// direction, and crops that pixel; the result has one point per pixel. Aspect corrections of up to one
/// percent are ignored. Nil when nothing is left after the crop, or when the receiver has no representation.
ImagePointer resizedImageWithSizeHQ(const ImagePointer& image, NSSize size);

// Resolution, rotation and other drawings.

/// `convertResolution`: sets the receiver's size in points to the pixel size of its best representation; 0 x
/// 0 when it has none.
void convertResolution(NSImage& image);

/// `imageResolution`: the pixel width of the first representation divided by the width in points, and the
/// same pixel WIDTH (not height) divided by the height in points. Infinite or NaN for a side of 0. Raises
/// NSRangeException when there is no representation.
NSSize imageResolution(const NSImage& image);

/// `clockwiseRotate`: a new image, turned by 90 degrees counter-clockwise on screen, despite the name; for
/// EXIF orientation 8.
ImagePointer clockwiseRotate(const ImagePointer& image);

/// `rotate`: a new image, turned by 90 degrees clockwise on screen; for EXIF orientation 6.
ImagePointer rotate(const ImagePointer& image);

/// `thumbnailImage`: a new image that fits into 128 x 128 points, with the aspect ratio (in points) of the
/// best representation. Also sets the size of that representation to the thumbnail's size; the receiver's
/// size stays.
ImagePointer thumbnailImage(const ImagePointer& image);

/// `translucentImageWithAlpha:`: a new image of the same size whose alpha is multiplied by `alpha`: 0 is
/// clear, 1 changes nothing. Values outside 0 to 1 are clamped; NaN counts as 0.
ImagePointer translucentImageWithAlpha(const ImagePointer& image, float alpha);

// Encoding. `names` are the properties to keep: NSImageColorSyncProfileData, NSImageEXIFData,
// NSImageRGBColorTable; others are ignored. `source` is the file with the EXIF block and the colour
// table: its path (nil or "" for none), or the file itself. The forms without these arguments keep nothing.
// Properties that the format cannot store are left out. Nil when the image has no representation or cannot be
// encoded.

/// The representation in any format of the table; those below are for one format each. `compression` is the
/// quality, 0 to 1, of a format with a quality. A format without alpha is drawn like JPEG.
DataPointer representationInFormat(const NSImage& image, FileType type, float compression,
                                   const PictureFile& source, const std::vector<NSString>& names,
                                   const EncodingRules& rules = {});
/// The same into `file`, a descriptor of an empty file that is open for writing. False where the other gives
/// nil; the content of the file is then of no use.
bool writeRepresentationInFormat(int file, const NSImage& image, FileType type, float compression,
                                 const PictureFile& source, const std::vector<NSString>& names,
                                 const EncodingRules& rules = {});

/// `JPEGRepresentationWithCompression:`, `JPEGRepresentationWithCompression:source:properties:`: draws the
/// image on white at its size in points. `compression` is the quality, 0 to 1. Nil for an image of 0 x 0
/// points; an image without representations gives a white picture.
DataPointer JPEGRepresentationWithCompression(const NSImage& image, float compression,
                                              const PictureFile& source = {},
                                              const std::vector<NSString>& names = {});
/// `PNGRepresentation`.
DataPointer PNGRepresentation(const NSImage& image);
/// `PNGRepresentationWithSource:properties:`: the pixels with their alpha.
DataPointer PNGRepresentationWithSource(const NSImage& image, const PictureFile& source,
                                        const std::vector<NSString>& names);
/// `GIFRepresentation`.
DataPointer GIFRepresentation(const NSImage& image);
/// `GIFRepresentationWithSource:properties:`: partial transparency is dithered. With NSImageRGBColorTable the
/// colour table is that of the source, if the source has one.
DataPointer GIFRepresentationWithSource(const NSImage& image, const PictureFile& source,
                                        const std::vector<NSString>& names);
/// `TIFFRepresentationWithSource:properties:`: the pixels with their alpha. (The form without arguments is
/// NSImage::TIFFRepresentation.)
DataPointer TIFFRepresentationWithSource(const NSImage& image, const PictureFile& source,
                                         const std::vector<NSString>& names);

/// `imagePropertiesForFile:bitmap:properties:`: the available properties of those named. The profile comes
/// from `bitmap`, or from the receiver when that is null; the others come from the file, which may be
/// missing. Empty without names or without a source. For a file that is open already the profile and the EXIF
/// block stand for their bytes (PropertyOfSource).
ImageProperties imagePropertiesForFile(const NSImage& image, const PictureFile& source,
                                       const NSBitmapImageRep* bitmap, const std::vector<NSString>& names);

} // namespace kestrine::myUtility
