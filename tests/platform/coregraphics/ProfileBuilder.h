// ProfileBuilder: writes ICC profiles byte by byte, independently of the colour library.
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

/// A profile of version 2. The names are signatures of four characters, such as "RGB ", "mntr" and "XYZ ".
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

/// A table with 8-bit numbers from `inputs` channels to L*a*b* with two nodes per axis. The last channel
/// changes fastest.
Bytes tableOfCorners(unsigned inputs, const std::vector<Lab>& corners);

/// A display profile with the primaries of sRGB and a curve (the content of a tag) for each channel.
Bytes matrixProfile(const Bytes& red, const Bytes& green, const Bytes& blue);
Bytes grayProfile(const Bytes& curve, std::string_view connection = "XYZ ");

/// The content of a tag; nothing if the profile does not have it.
std::optional<Bytes> tagOf(ByteView profile, std::string_view signature);
/// The three numbers of a colour tag.
std::array<double, 3> colorOf(ByteView profile, std::string_view signature);

/// Overwrites four bytes with a big-endian number.
void put32(Bytes& bytes, std::size_t at, std::uint32_t number);

/// Paths of the profiles of the package icc-profiles-free; empty if it is not installed.
std::vector<std::string> installedProfiles();

} // namespace kestrine::testing
