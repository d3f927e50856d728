// ColorManagement: the colour library's objects as handles, for the sources of this folder only. Every use
// has its own context, which stays silent, so that nothing is shared between threads and nothing is ever
// printed.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/host/Bytes.h"

#include <lcms2.h>
#include <memory>
#include <type_traits>

namespace kestrine {

struct ContextDeleter {
    void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
struct ProfileDeleter {
    void operator()(cmsHPROFILE profile) const { cmsCloseProfile(profile); }
};
struct TransformDeleter {
    void operator()(cmsHTRANSFORM transform) const { cmsDeleteTransform(transform); }
};
/// Whatever is made in a context must go before it: declare the context first.
using ContextHandle = std::unique_ptr<std::remove_pointer_t<cmsContext>, ContextDeleter>;
using ProfileHandle = std::unique_ptr<void, ProfileDeleter>;
using TransformHandle = std::unique_ptr<void, TransformDeleter>;

/// A silent context. Throws std::bad_alloc when there is no memory for it.
ContextHandle makeContext();

/// The profile in `icc` when it is one for pictures of colour space `space` and a conversion can be made of
/// it; else null.
ProfileHandle openPictureProfile(const ContextHandle& context, ByteView icc, cmsColorSpaceSignature space);

/// How many of `icc`'s bytes are the profile: what its header says. 0 when that cannot be.
std::size_t profileSize(ByteView icc);

/// Whether conversions from this profile go through a table of colours rather than curves and a matrix.
bool convertsByTable(const ProfileHandle& profile);

/// A tag's bytes as the file holds them; empty when it is not there. Not for tags that the library has read.
Bytes rawTag(const ProfileHandle& profile, cmsTagSignature tag);

/// Turns rows of pixels into an RGB space, relative colorimetric with black point compensation: colours that
/// the space can show stay what the profile says, and its black becomes black. (The perceptual tables of
/// profiles differ in what they do to every colour, and a profile of curves and a matrix has none.)
class TransformIntoRGB {
public:
    /// `icc` is a profile for pictures of `space`; `from` and `to` are pixel formats of the colour library
    /// with the same number of extra samples, which are copied; `flags` are further ones of its flags;
    /// `target` is the RGB space. Null when the profile is not fit.
    static std::unique_ptr<TransformIntoRGB> ofProfile(ByteView icc, cmsColorSpaceSignature space,
                                                       cmsUInt32Number from, cmsUInt32Number to,
                                                       cmsUInt32Number flags,
                                                       const ColorProfile& target = ColorProfile::sRGB());
    /// The same for colours in CIE L*a*b* under D50, into sRGB. Throws std::bad_alloc when there is no memory
    /// for it.
    static std::unique_ptr<TransformIntoRGB> ofLab(cmsUInt32Number from, cmsUInt32Number to,
                                                   cmsUInt32Number flags);

    void convert(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) {
        cmsDoTransform(transform_.get(), from, to, static_cast<cmsUInt32Number>(pixels));
    }

private:
    TransformIntoRGB(ContextHandle context, TransformHandle transform)
        : context_(std::move(context)), transform_(std::move(transform)) {}

    ContextHandle context_;
    TransformHandle transform_;
};

/// The colour library's name for `channels` colour samples of `space` (one of its PT_ numbers), with alpha
/// behind them when `alpha` says so.
constexpr cmsUInt32Number pixelFormat(unsigned space, unsigned channels, SampleDepth depth, bool alpha) {
    return COLORSPACE_SH(space) | CHANNELS_SH(channels) | EXTRA_SH(alpha ? 1u : 0u)
           | BYTES_SH(static_cast<unsigned>(depth));
}

} // namespace kestrine
