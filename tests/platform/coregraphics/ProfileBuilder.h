// ProfileBuilder: ICC profiles written byte by byte, so that tests know what is in them without the colour
// library.
#pragma once

#include "platform/host/Bytes.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrine::testing {

struct ProfileTag {
    std::string signature;
    Bytes content;
};

/// A version 2 profile. The names are the four characters of the format: "RGB ", "mntr", "XYZ ".
Bytes makeICC(std::string_view space, std::string_view deviceClass, std::string_view connection,
              const std::vector<ProfileTag>& tags);

/// Contents of tags.
Bytes curveOfSamples(const std::vector<std::uint16_t>& samples);
Bytes curveOfFormula(unsigned function, const std::vector<double>& parameters);
Bytes colorTag(double x, double y, double z);

/// A colour in CIE L*a*b*.
struct Lab {
    double lightness, a, b;
};

/// A table of 8-bit numbers from `inputs` channels to L*a*b* with two nodes an axis; the last channel changes
/// fastest.
Bytes tableOfCorners(unsigned inputs, const std::vector<Lab>& corners);

/// A display profile of sRGB's primaries with one curve (a tag's content) for each channel.
Bytes matrixProfile(const Bytes& red, const Bytes& green, const Bytes& blue);
Bytes grayProfile(const Bytes& curve, std::string_view connection = "XYZ ");

/// The content of a tag of any profile; nothing when it has none of that name.
std::optional<Bytes> tagOf(ByteView profile, std::string_view signature);
/// The three numbers of a colour tag.
std::array<double, 3> colorOf(ByteView profile, std::string_view signature);

/// Puts a big-endian number over four bytes.
void put32(Bytes& bytes, std::size_t at, std::uint32_t number);

/// Profiles that the package icc-profiles-free puts into the system, by path; none when it is not there.
std::vector<std::string> installedProfiles();

} // namespace kestrine::testing
