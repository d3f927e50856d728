// ColorManagement: handles for the objects of Little CMS ("the colour library"), for this folder only. Every
// use has its own context, so that threads share nothing. Contexts never print messages.
#pragma once

#include "platform/coregraphics/ColorLibrary.h"
#include "platform/coregraphics/ColorProfile.h"
#include "platform/host/Bytes.h"

#include <memory>
#include <type_traits>

namespace kestrine {

struct ContextDeleter {
    void operator()(cmsContext context) const { colorLibrary().deleteContext(context); }
};
struct ProfileDeleter {
    void operator()(cmsHPROFILE profile) const { colorLibrary().closeProfile(profile); }
};
struct TransformDeleter {
    void operator()(cmsHTRANSFORM transform) const { colorLibrary().deleteTransform(transform); }
};
/// Objects made in a context must be destroyed before it, so declare the context first.
using ContextHandle = std::unique_ptr<std::remove_pointer_t<cmsContext>, ContextDeleter>;
using ProfileHandle = std::unique_ptr<void, ProfileDeleter>;
using TransformHandle = std::unique_ptr<void, TransformDeleter>;

/// A context that prints nothing. Throws std::bad_alloc if there is not enough memory.
ContextHandle makeContext();

/// The profile in `icc`; null if it is not a profile for pictures in colour space `space`, or if no
/// conversion can use it.
ProfileHandle openPictureProfile(const ContextHandle& context, ByteView icc, cmsColorSpaceSignature space);

/// The size of the profile at the start of `icc`, as its header states it; 0 if that is not plausible.
std::size_t profileSize(ByteView icc);

/// Whether conversions from this profile use a table of colours rather than curves and a matrix.
bool convertsByTable(const ProfileHandle& profile);

/// The stored bytes of a tag; empty if it is missing. Not for tags that the library has already parsed.
Bytes rawTag(const ProfileHandle& profile, cmsTagSignature tag);

/// Converts pixels to an RGB space, relative colorimetric with black point compensation: colours inside the
/// space are exactly those of the profile, and its black becomes black. (Perceptual tables would change all
/// colours, each profile in its own way, and profiles of curves and a matrix have no such tables.)
class TransformIntoRGB {
public:
    /// `icc` is a profile for pictures in `space`. `from` and `to` are pixel formats of the colour library
    /// with the same number of extra samples, which are copied. `flags` are additional flags of the library.
    /// `target` is the RGB space. Null if the profile cannot be used.
    static std::unique_ptr<TransformIntoRGB> ofProfile(ByteView icc, cmsColorSpaceSignature space,
                                                       cmsUInt32Number from, cmsUInt32Number to,
                                                       cmsUInt32Number flags,
                                                       const ColorProfile& target = ColorProfile::sRGB());
    /// The transform from CIE L*a*b* under D50 to sRGB. Throws std::bad_alloc if there is not enough memory.
    static std::unique_ptr<TransformIntoRGB> ofLab(cmsUInt32Number from, cmsUInt32Number to,
                                                   cmsUInt32Number flags);

    void convert(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) {
        colorLibrary().transform(transform_.get(), from, to, static_cast<cmsUInt32Number>(pixels));
    }

private:
    TransformIntoRGB(ContextHandle context, TransformHandle transform)
        : context_(std::move(context)), transform_(std::move(transform)) {}

    ContextHandle context_;
    TransformHandle transform_;
};

/// The colour library's pixel format with `channels` colour samples of `space` (one of its PT_ constants),
/// followed by alpha if `alpha`.
constexpr cmsUInt32Number pixelFormat(unsigned space, unsigned channels, SampleDepth depth, bool alpha) {
    return COLORSPACE_SH(space) | CHANNELS_SH(channels) | EXTRA_SH(alpha ? 1u : 0u)
           | BYTES_SH(static_cast<unsigned>(depth));
}

} // namespace kestrine
