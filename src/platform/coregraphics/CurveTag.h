// CurveTag: the tone curves of ICC profiles as the file holds them. We read these few bytes ourselves because
// the colour library computes thousands of powers for each curve it reads.
#pragma once

#include "platform/coregraphics/ToneCurve.h"

namespace kestrine {

/// A formula, or samples at equally spaced stored values (at least two; 65535 is full light).
using CurveTag = std::variant<ToneCurve::Formula, std::vector<std::uint16_t>>;

/// The curve in the bytes of a tag, of type "curv" or "para"; nothing when they are not one.
std::optional<CurveTag> parseCurveTag(ByteView tag);

} // namespace kestrine
