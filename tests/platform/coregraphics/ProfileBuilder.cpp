#include "tests/platform/coregraphics/ProfileBuilder.h"

#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace kestrine::testing {

namespace {

void append(Bytes& bytes, ByteView more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void append(Bytes& bytes, std::string_view text) { bytes.insert(bytes.end(), text.begin(), text.end()); }

void append16(Bytes& bytes, unsigned number) {
    bytes.push_back(static_cast<std::uint8_t>(number >> 8));
    bytes.push_back(static_cast<std::uint8_t>(number));
}

void append32(Bytes& bytes, std::uint32_t number) {
    append16(bytes, number >> 16);
    append16(bytes, number & 0xFFFF);
}

void appendFixed(Bytes& bytes, double number) {
    append32(bytes, static_cast<std::uint32_t>(static_cast<std::int32_t>(std::lround(number * 65536))));
}

std::uint32_t number32(ByteView bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 24 | bytes[at + 1] << 16 | bytes[at + 2] << 8 | bytes[at + 3];
}

Bytes ofType(std::string_view type) {
    Bytes tag = bytesOf(type);
    append32(tag, 0);
    return tag;
}

std::uint8_t rounded(double value) { return static_cast<std::uint8_t>(std::lround(value)); }

} // namespace

void put32(Bytes& bytes, std::size_t at, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes[at++] = static_cast<std::uint8_t>(number >> shift);
}

Bytes makeICC(std::string_view space, std::string_view deviceClass, std::string_view connection,
              const std::vector<ProfileTag>& tags) {
    Bytes icc(128);
    put32(icc, 8, 0x02100000);
    std::ranges::copy(deviceClass, icc.begin() + 12);
    std::ranges::copy(space, icc.begin() + 16);
    std::ranges::copy(connection, icc.begin() + 20);
    std::ranges::copy(std::string_view("acsp"), icc.begin() + 36);
    append32(icc, static_cast<std::uint32_t>(tags.size()));
    std::size_t offset = icc.size() + 12 * tags.size();
    for (const ProfileTag& tag : tags) {
        append(icc, tag.signature);
        append32(icc, static_cast<std::uint32_t>(offset));
        append32(icc, static_cast<std::uint32_t>(tag.content.size()));
        offset += (tag.content.size() + 3) / 4 * 4;
    }
    for (const ProfileTag& tag : tags) {
        append(icc, tag.content);
        icc.resize((icc.size() + 3) / 4 * 4);
    }
    put32(icc, 0, static_cast<std::uint32_t>(icc.size()));
    return icc;
}

Bytes curveOfSamples(const std::vector<std::uint16_t>& samples) {
    Bytes tag = ofType("curv");
    append32(tag, static_cast<std::uint32_t>(samples.size()));
    for (const std::uint16_t sample : samples)
        append16(tag, sample);
    return tag;
}

Bytes curveOfFormula(unsigned function, const std::vector<double>& parameters) {
    Bytes tag = ofType("para");
    append16(tag, function);
    append16(tag, 0);
    for (const double parameter : parameters)
        appendFixed(tag, parameter);
    return tag;
}

Bytes colorTag(double x, double y, double z) {
    Bytes tag = ofType("XYZ ");
    for (const double number : {x, y, z})
        appendFixed(tag, number);
    return tag;
}

Bytes tableOfCorners(unsigned inputs, const std::vector<Lab>& corners) {
    Bytes tag = ofType("mft1");
    append(tag, Bytes{static_cast<std::uint8_t>(inputs), 3, 2, 0});
    for (const double number : {1, 0, 0, 0, 1, 0, 0, 0, 1})
        appendFixed(tag, number);
    Bytes straight(256);
    for (unsigned i = 0; i < 256; ++i)
        straight[i] = static_cast<std::uint8_t>(i);
    for (unsigned channel = 0; channel < inputs; ++channel)
        append(tag, straight);
    for (const Lab& color : corners)
        append(tag, Bytes{rounded(color.lightness * 2.55), rounded(color.a + 128), rounded(color.b + 128)});
    for (unsigned channel = 0; channel < 3; ++channel)
        append(tag, straight);
    return tag;
}

Bytes matrixProfile(const Bytes& red, const Bytes& green, const Bytes& blue) {
    return makeICC("RGB ", "mntr", "XYZ ",
                   {{"rTRC", red},
                    {"gTRC", green},
                    {"bTRC", blue},
                    {"rXYZ", colorTag(0.43607, 0.22249, 0.01392)},
                    {"gXYZ", colorTag(0.38515, 0.71687, 0.09708)},
                    {"bXYZ", colorTag(0.14307, 0.06061, 0.71410)}});
}

Bytes grayProfile(const Bytes& curve, std::string_view connection) {
    return makeICC("GRAY", "mntr", connection, {{"kTRC", curve}});
}

std::optional<Bytes> tagOf(ByteView profile, std::string_view signature) {
    const std::uint32_t count = number32(profile, 128);
    for (std::size_t entry = 132; entry < 132 + 12 * std::size_t{count}; entry += 12)
        if (std::ranges::equal(profile.subspan(entry, 4), signature)) {
            const ByteView content =
                profile.subspan(number32(profile, entry + 4), number32(profile, entry + 8));
            return Bytes(content.begin(), content.end());
        }
    return std::nullopt;
}

std::array<double, 3> colorOf(ByteView profile, std::string_view signature) {
    const Bytes tag = tagOf(profile, signature).value();
    std::array<double, 3> color;
    for (std::size_t i = 0; i < color.size(); ++i)
        color[i] = static_cast<std::int32_t>(number32(tag, 8 + 4 * i)) / 65536.0;
    return color;
}

std::vector<std::string> installedProfiles() {
    std::vector<std::string> paths;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/share/color/icc", none))
        if (entry.path().extension() == ".icc")
            paths.push_back(entry.path());
    std::ranges::sort(paths);
    return paths;
}

} // namespace kestrine::testing
