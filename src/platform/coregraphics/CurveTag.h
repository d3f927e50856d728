// CurveTag: the tone curves of ICC profiles as they are stored. We read these few bytes ourselves because the
// colour library computes thousands of powers for each curve that it reads.
#pragma once

#include "platform/coregraphics/ToneCurve.h"

namespace kestrine {

/// A formula, or samples at equally spaced stored values (at least two; 65535 is full light).
using CurveTag = std::variant<ToneCurve::Formula, std::vector<std::uint16_t>>;

/// The curve in the bytes of a tag of type "curv" or "para"; nullopt if they are invalid.
std::optional<CurveTag> parseCurveTag(ByteView tag);

} // namespace kestrine
