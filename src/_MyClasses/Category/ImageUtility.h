// The extension group `myUtility` on NSImage: scaling, resolution and turns, encoding with metadata; and two
// plain functions that make images and bitmaps of Core Image's results.
// Receivers are held by pointers because some operations answer the receiver itself.
#pragma once

#include "platform/appkit/NSImage.h"

#include <vector>

namespace kestrine {

/// `NSImageRepWithCImage`: a new image with one NSCIImageRep.
std::shared_ptr<NSImage> NSImageRepWithCImage(const CIImage& image);

/// `RGBABitmapImageRepWithCImage`: a new bitmap of the image in generic RGB, 8 bits red, green, blue and
/// alpha. Its pixels are rendered when they are asked for.
std::shared_ptr<NSBitmapImageRep> RGBABitmapImageRepWithCImage(const CIImage& image);

} // namespace kestrine

namespace kestrine::myUtility {

using ImagePointer = std::shared_ptr<NSImage>;
using DataPointer = std::shared_ptr<const NSData>;

// Scaling. Lengths and sizes are in points and are neither rounded nor checked; whatever comes of zero,
// infinite or NaN values goes on to the drawing or filter calls. HQ chooses the Lanczos filter
// (resizedImageWithSizeHQ), which the forms without it take as well; else it is plain drawing
// (resizedImageWithSize). The receiver is never changed; nil gives nil.

/// `resizedImageWithRatio:`, `resizedImageWithRatio:HQ:`: a ratio of exactly 100 gives the receiver itself;
/// any other, 1 included, a new image of ratio times the receiver's size.
ImagePointer resizedImageWithRatio(const ImagePointer& image, float ratio, bool HQ = true);

/// `resizedImageWithWidthRatio:`, `resizedImageWithWidthRatio:HQ:`: a width in points despite the name. The
/// receiver itself when it has that width.
ImagePointer resizedImageWithWidthRatio(const ImagePointer& image, float width, bool HQ = true);

/// `resizedImageWithHeightRatio:`, `resizedImageWithHeightRatio:HQ:`: likewise by the height.
ImagePointer resizedImageWithHeightRatio(const ImagePointer& image, float height, bool HQ = true);

/// `resizedImageWithMaxSize:`, `resizedImageWithMaxSize:HQ:`: by the longer side, which is the height in a
/// square. The length asked for is `longestSide` plus the flag's value: one point more in high quality.
ImagePointer resizedImageWithMaxSize(const ImagePointer& image, float longestSide, signed char HQ = 1);

/// `resizedImageWithSize:`: plain drawing into a new image of exactly this size, whatever the aspect.
ImagePointer resizedImageWithSize(const ImagePointer& image, NSSize size);

/// `resizedImageWithSizeHQ:`: through the Lanczos filter, one pixel larger each way and trimmed again. Aspect
/// corrections within one percent are dropped. nil when nothing is left after the trim.
ImagePointer resizedImageWithSizeHQ(const ImagePointer& image, NSSize size);

// Resolution, turns and other drawings.

/// `convertResolution`: makes the receiver as large, in points, as its best representation is in pixels.
void convertResolution(NSImage& image);

/// `imageResolution`: pixels per point. Both values divide the first representation's pixel WIDTH, the second
/// by the height in points. Raises NSRangeException when there is no representation.
NSSize imageResolution(const NSImage& image);

/// `clockwiseRotate`: in spite of its name a quarter turn counter-clockwise on screen, which EXIF orientation
/// 8 needs.
ImagePointer clockwiseRotate(const ImagePointer& image);

/// `rotate`: a quarter turn clockwise on screen, for EXIF orientation 6.
ImagePointer rotate(const ImagePointer& image);

/// `thumbnailImage`: a new image within 128 x 128 points, of the aspect that the best representation has in
/// points. That representation keeps the thumbnail's size from then on; the receiver's own size stays.
ImagePointer thumbnailImage(const ImagePointer& image);

/// `translucentImageWithAlpha:`: a new image of the same size with alpha (colour stays) times `alpha`, from 0
/// for clear to 1 for an equal image.
ImagePointer translucentImageWithAlpha(const ImagePointer& image, float alpha);

// Encoding. `source` is the path of the file whose EXIF block and colour table may be kept (nothing or "" for
// none); `names` are the properties to keep, of NSImageColorSyncProfileData, NSImageEXIFData,
// NSImageRGBColorTable; others are ignored. The forms without both keep nothing. nil when the file cannot be
// made.

/// `JPEGRepresentationWithCompression:`, `JPEGRepresentationWithCompression:source:properties:`: laid on
/// white. `compression` is the quality, 0 to 1. nil for an image of 0 x 0 points.
DataPointer JPEGRepresentationWithCompression(const NSImage& image, float compression,
                                              const OptionalString& source = {},
                                              const std::vector<NSString>& names = {});
/// `PNGRepresentation`.
DataPointer PNGRepresentation(const NSImage& image);
/// `PNGRepresentationWithSource:properties:`.
DataPointer PNGRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                        const std::vector<NSString>& names);
/// `GIFRepresentation`.
DataPointer GIFRepresentation(const NSImage& image);
/// `GIFRepresentationWithSource:properties:`: half-transparency is dithered.
DataPointer GIFRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                        const std::vector<NSString>& names);
/// `TIFFRepresentationWithSource:properties:`.
DataPointer TIFFRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                         const std::vector<NSString>& names);

/// `imagePropertiesForFile:bitmap:properties:`: the named properties that are there; the profile from
/// `bitmap` (from the receiver when that is null), the others from the file. Empty without names or without a
/// source.
ImageProperties imagePropertiesForFile(const NSImage& image, const OptionalString& source,
                                       const NSBitmapImageRep* bitmap, const std::vector<NSString>& names);

} // namespace kestrine::myUtility
