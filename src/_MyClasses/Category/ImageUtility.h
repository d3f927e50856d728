// The extension group `myUtility` on NSImage: scaling, resolution and turns, encoding with metadata; and two
// plain functions that make images and bitmaps of Core Image's results.
// Receivers are held by pointers where an operation answers an image: some answer the receiver itself.
#pragma once

#include "platform/appkit/NSImage.h"

#include <vector>

namespace kestrine {

/// `NSImageRepWithCImage`: a new image with one NSCIImageRep, as large in points as `image` is in pixels.
std::shared_ptr<NSImage> NSImageRepWithCImage(const CIImage& image);

/// `RGBABitmapImageRepWithCImage`: a new bitmap, as large in points as `image` is in pixels, of 8 bits red,
/// green, blue and alpha in generic RGB. Its pixels are rendered when they are asked for; the bitmapData of a
/// picture that cannot be decoded is nil.
std::shared_ptr<NSBitmapImageRep> RGBABitmapImageRepWithCImage(const CIImage& image);

} // namespace kestrine

namespace kestrine::myUtility {

using ImagePointer = std::shared_ptr<NSImage>;
using DataPointer = std::shared_ptr<const NSData>;

// For all operations: nil as receiver gives nil. Images keep what they were made of, so changing or encoding
// the receiver later changes none of them. Nothing is decoded here; a picture that turns out to be damaged
// gives no data when it is encoded. Nothing is raised but what is said.

// Scaling. Lengths and sizes are in points and are neither rounded nor checked; whatever comes of zero,
// infinite or NaN values goes on to the drawing or filter calls. HQ chooses the Lanczos filter
// (resizedImageWithSizeHQ), which the forms without it take as well; else it is plain drawing
// (resizedImageWithSize). The receiver is never changed.

/// `resizedImageWithRatio:`, `resizedImageWithRatio:HQ:`: a ratio of exactly 100 gives the receiver itself;
/// any other, 1 included, a new image of ratio times the receiver's size (0.5 halves both sides).
ImagePointer resizedImageWithRatio(const ImagePointer& image, float ratio, bool HQ = true);

/// `resizedImageWithWidthRatio:`, `resizedImageWithWidthRatio:HQ:`: a width in points despite the name; the
/// height follows. The receiver itself when it has that width, or when the ratio of the widths is exactly
/// 100.
ImagePointer resizedImageWithWidthRatio(const ImagePointer& image, float width, bool HQ = true);

/// `resizedImageWithHeightRatio:`, `resizedImageWithHeightRatio:HQ:`: likewise by the height.
ImagePointer resizedImageWithHeightRatio(const ImagePointer& image, float height, bool HQ = true);

/// `resizedImageWithMaxSize:`, `resizedImageWithMaxSize:HQ:`: by the longer side, which is the height in a
/// square and the width when they cannot be compared. The length asked for is `longestSide` plus the flag's
/// value: one point more in high quality. Any value but 0 is high quality.
ImagePointer resizedImageWithMaxSize(const ImagePointer& image, float longestSide, signed char HQ = 1);

/// `resizedImageWithSize:`: plain drawing into a new image of exactly this size, whatever the aspect. Without
/// representations when the size is one that nothing can be drawn into (see drawnImage).
ImagePointer resizedImageWithSize(const ImagePointer& image, NSSize size);

/// `resizedImageWithSizeHQ:`: the receiver's pixels through the Lanczos filter, one pixel larger each way and
/// trimmed again; as many points as pixels. Aspect corrections within one percent are dropped. nil when
/// nothing is left after the trim, or when the receiver has no representation.
ImagePointer resizedImageWithSizeHQ(const ImagePointer& image, NSSize size);

// Resolution, turns and other drawings.

/// `convertResolution`: makes the receiver as large, in points, as its best representation is in pixels; 0 x
/// 0 when it has none.
void convertResolution(NSImage& image);

/// `imageResolution`: pixels per point, horizontally and vertically. Both values divide the first
/// representation's pixel WIDTH, the second by the height in points; infinite or NaN for a side of 0. Raises
/// NSRangeException when there is no representation.
NSSize imageResolution(const NSImage& image);

/// `clockwiseRotate`: in spite of its name a quarter turn counter-clockwise on screen, which EXIF orientation
/// 8 needs. A new image, as wide as the receiver is high.
ImagePointer clockwiseRotate(const ImagePointer& image);

/// `rotate`: a quarter turn clockwise on screen, for EXIF orientation 6. Likewise.
ImagePointer rotate(const ImagePointer& image);

/// `thumbnailImage`: a new image within 128 x 128 points, of the aspect that the best representation has in
/// points. That representation keeps the thumbnail's size from then on; the receiver's own size stays.
ImagePointer thumbnailImage(const ImagePointer& image);

/// `translucentImageWithAlpha:`: a new image of the same size with alpha (colour stays) times `alpha`, from 0
/// for clear to 1 for an equal image; values beyond count as these ends, NaN as 0.
ImagePointer translucentImageWithAlpha(const ImagePointer& image, float alpha);

// Encoding. `source` is the path of the file whose EXIF block and colour table may be kept (nothing or "" for
// none); `names` are the properties to keep, of NSImageColorSyncProfileData, NSImageEXIFData,
// NSImageRGBColorTable; others are ignored. The forms without both keep nothing. A format leaves out what it
// has no place for. nil when the image has no representation or the file cannot be made of it.

/// `JPEGRepresentationWithCompression:`, `JPEGRepresentationWithCompression:source:properties:`: drawn on
/// white at the image's size in points. `compression` is the quality, 0 to 1. nil for an image of 0 x 0
/// points; one without representations is all white.
DataPointer JPEGRepresentationWithCompression(const NSImage& image, float compression,
                                              const OptionalString& source = {},
                                              const std::vector<NSString>& names = {});
/// `PNGRepresentation`.
DataPointer PNGRepresentation(const NSImage& image);
/// `PNGRepresentationWithSource:properties:`: the pixels as they are, with their alpha.
DataPointer PNGRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                        const std::vector<NSString>& names);
/// `GIFRepresentation`.
DataPointer GIFRepresentation(const NSImage& image);
/// `GIFRepresentationWithSource:properties:`: half-transparency is dithered. With NSImageRGBColorTable the
/// colours are exactly those of the source, when it is an indexed picture.
DataPointer GIFRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                        const std::vector<NSString>& names);
/// `TIFFRepresentationWithSource:properties:`: the pixels as they are, with their alpha. (Without arguments
/// there is NSImage::TIFFRepresentation.)
DataPointer TIFFRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                         const std::vector<NSString>& names);

/// `imagePropertiesForFile:bitmap:properties:`: those of the named properties that are there; the profile
/// from `bitmap` (from the receiver when that is null), the others from the file, which may be missing. Empty
/// without names or without a source.
ImageProperties imagePropertiesForFile(const NSImage& image, const OptionalString& source,
                                       const NSBitmapImageRep* bitmap, const std::vector<NSString>& names);

} // namespace kestrine::myUtility
