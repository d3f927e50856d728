// Converts grey and RGB rows to another RGB space. Nearly all profiles have curves and a matrix; for these
// our own tables are exact and need no preparation. For all other profiles the colour library computes every
// pixel without its optimisations, which would be wrong by many levels for colours outside the target space.
// A null profile means sRGB, for the source and for the target.

#include "platform/coregraphics/ColorConversion.h"

#include "platform/coregraphics/ColorManagement.h"
#include "platform/coregraphics/RowStages.h"
#include "platform/coregraphics/ToneCurve.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace kestrine {

namespace {

using Conversion = std::function<void(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels)>;

class ConvertedRows final : public RowSource {
public:
    ConvertedRows(RowSourcePointer input, const RowFormat& format, Conversion conversion)
        : RowSource(format), input_(std::move(input)), conversion_(std::move(conversion)),
          row_(input_->format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(input_->readRow(row_));
        conversion_(row_.data(), row.data(), format().width);
        return {};
    }

private:
    const RowSourcePointer input_;
    const Conversion conversion_;
    Bytes row_;
};

/// Converts linear light between the primaries of two profiles: matrix[to][from].
template <class Number>
using Matrix = std::array<std::array<Number, 3>, 3>;

constexpr Matrix<float> unchanged = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

Matrix<double> inverse(const Matrix<double>& m) {
    const auto minor = [&](std::size_t row, std::size_t column) {
        const auto& a = m[(row + 1) % 3];
        const auto& b = m[(row + 2) % 3];
        return a[(column + 1) % 3] * b[(column + 2) % 3] - a[(column + 2) % 3] * b[(column + 1) % 3];
    };
    const double determinant = m[0][0] * minor(0, 0) + m[0][1] * minor(0, 1) + m[0][2] * minor(0, 2);
    Matrix<double> result;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            result[row][column] = minor(column, row) / determinant;
    return result;
}

/// The product, in single precision for use with pixels.
Matrix<float> product(const Matrix<double>& a, const Matrix<double>& b) {
    Matrix<float> result;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            result[row][column] = static_cast<float>(a[row][0] * b[0][column] + a[row][1] * b[1][column]
                                                     + a[row][2] * b[2][column]);
    return result;
}

/// The primaries of a profile (CIE XYZ under D50) as columns; nullopt if it converts by a table.
std::optional<Matrix<double>> primaries(const ColorProfile& profile) {
    const ContextHandle context = makeContext();
    const ProfileHandle handle = openPictureProfile(context, profile.bytes(), cmsSigRgbData);
    if (!handle || convertsByTable(handle))
        return std::nullopt;
    constexpr cmsTagSignature tags[] = {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    Matrix<double> matrix;
    for (std::size_t column = 0; column < 3; ++column) {
        const auto* color = static_cast<const cmsCIEXYZ*>(colorLibrary().readTag(handle.get(), tags[column]));
        matrix[0][column] = color->X;
        matrix[1][column] = color->Y;
        matrix[2][column] = color->Z;
    }
    return matrix;
}

bool isGrayTable(const ColorProfile& profile) {
    const ContextHandle context = makeContext();
    const ProfileHandle handle = openPictureProfile(context, profile.bytes(), cmsSigGrayData);
    return !handle || convertsByTable(handle);
}

bool startsAtBlack(const ToneCurve& curve) { return curve.light(0) == 0; }

/// Whether all channels of an RGB space have the same plain curve, with which pixels are encoded.
bool hasOneCurve(const ColorProfile& space) {
    const auto curves = plainToneCurves(space);
    return curves && startsAtBlack(curves->front())
           && std::ranges::all_of(*curves, [&](const ToneCurve& curve) { return curve == curves->front(); });
}

/// Converts light of the profile's primaries to light of those of `target`, an RGB profile. nullopt if one of
/// them has more than curves and, for RGB, a matrix, if the target has several curves, or if a curve does not
/// start at 0, since black would then need compensation.
std::optional<Matrix<float>> lightMatrix(const ColorProfile& profile, const ColorProfile& target) {
    const auto curves = plainToneCurves(profile);
    if (!curves || !std::ranges::all_of(*curves, startsAtBlack) || !hasOneCurve(target))
        return std::nullopt;
    if (profile.model() == ColorModel::gray)
        return isGrayTable(profile) ? std::nullopt : std::optional(unchanged);
    const auto from = primaries(profile);
    const auto to = primaries(target);
    if (!from || !to)
        return std::nullopt;
    return product(inverse(*to), *from);
}

std::span<const float> lightTable(const ToneTable& table, std::uint8_t) { return table.light8; }
std::span<const float> lightTable(const ToneTable& table, std::uint16_t) { return table.light16(); }

/// Converts light (any float) to stored codes with the tables of one curve.
template <class Sample>
class Encoder;

float tablePosition(float light) {
    return std::sqrt(std::min(std::max(light, 0.0f), 1.0f)) * static_cast<float>(toneTableSize - 1);
}

template <>
class Encoder<std::uint8_t> {
public:
    explicit Encoder(const ToneTable& table) : codes_(table.stored8) {}

    std::uint8_t operator()(float light) const {
        return codes_[static_cast<std::size_t>(tablePosition(light) + 0.5f)];
    }

private:
    std::span<const std::uint8_t> codes_;
};

template <>
class Encoder<std::uint16_t> {
public:
    explicit Encoder(const ToneTable& table) : fractions_(table.storedFraction()) {}

    std::uint16_t operator()(float light) const {
        const float place = tablePosition(light);
        const std::size_t index = std::min(static_cast<std::size_t>(place), toneTableSize - 2);
        const float step = fractions_[index + 1] - fractions_[index];
        const float fraction = fractions_[index] + step * (place - static_cast<float>(index));
        return static_cast<std::uint16_t>(fraction * 65535 + 0.5f);
    }

private:
    std::span<const float> fractions_;
};

/// Converts pixels to light, applies the matrix, and encodes the result.
template <class Sample>
class LightConversion {
public:
    LightConversion(const RowFormat& format, std::shared_ptr<const ToneTables> tables,
                    std::shared_ptr<const ToneTables> target, const Matrix<float>& matrix)
        : format_(format), tables_(std::move(tables)), target_(std::move(target)), encode_((*target_)[0]),
          matrix_(matrix) {
        for (std::size_t c = 0; c < tables_->channels.size(); ++c)
            light_[c] = lightTable((*tables_)[c], Sample{});
    }

    void operator()(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) const {
        const auto* in = reinterpret_cast<const Sample*>(from);
        auto* out = reinterpret_cast<Sample*>(to);
        const bool isGray = format_.model == ColorModel::gray;
        const std::size_t colors = format_.colorChannels();
        for (std::size_t i = 0; i < pixels; ++i, in += format_.channels(), out += 3 + format_.hasAlpha) {
            isGray ? convertGray(in, out) : convertRGB(in, out);
            if (format_.hasAlpha)
                out[3] = in[colors];
        }
    }

private:
    void convertGray(const Sample* in, Sample* out) const {
        out[0] = out[1] = out[2] = encode_(light_[0][in[0]]);
    }

    void convertRGB(const Sample* in, Sample* out) const {
        const float light[] = {light_[0][in[0]], light_[1][in[1]], light_[2][in[2]]};
        for (std::size_t c = 0; c < 3; ++c)
            out[c] = encode_(matrix_[c][0] * light[0] + matrix_[c][1] * light[1] + matrix_[c][2] * light[2]);
    }

    RowFormat format_;
    std::shared_ptr<const ToneTables> tables_;
    std::shared_ptr<const ToneTables> target_;
    Encoder<Sample> encode_;
    Matrix<float> matrix_;
    std::array<std::span<const float>, 3> light_;
};

Conversion conversionByLight(const RowFormat& format, const ColorProfile* profile, const ColorProfile* target,
                             const Matrix<float>& matrix) {
    std::shared_ptr<const ToneTables> from = toneTables(profile, format.model);
    std::shared_ptr<const ToneTables> to = toneTables(target, ColorModel::rgb);
    if (format.depth == SampleDepth::bits8)
        return LightConversion<std::uint8_t>(format, std::move(from), std::move(to), matrix);
    return LightConversion<std::uint16_t>(format, std::move(from), std::move(to), matrix);
}

/// Null if the colour library cannot use the profile.
Conversion conversionByLibrary(const RowFormat& format, const ColorProfile& profile,
                               const ColorProfile& target) {
    const bool isGray = format.model == ColorModel::gray;
    const auto from = pixelFormat(isGray ? PT_GRAY : PT_RGB, isGray ? 1 : 3, format.depth, format.hasAlpha);
    std::shared_ptr transform = TransformIntoRGB::ofProfile(
        profile.bytes(), isGray ? cmsSigGrayData : cmsSigRgbData, from,
        pixelFormat(PT_RGB, 3, format.depth, format.hasAlpha), cmsFLAGS_NOOPTIMIZE, target);
    if (!transform)
        return nullptr;
    return [transform](const std::uint8_t* in, std::uint8_t* out, std::size_t pixels) {
        transform->convert(in, out, pixels);
    };
}

/// Null if the profile cannot be used.
Conversion conversionInto(const ColorProfile* target, const RowFormat& format, const ColorProfile* profile) {
    // Grey without a profile has the tone curve of sRGB; neutral light is the same in every RGB space.
    if (!profile && format.model == ColorModel::gray)
        return conversionByLight(format, nullptr, target, unchanged);
    const ColorProfile from = profile ? *profile : ColorProfile::sRGB();
    const ColorProfile to = target ? *target : ColorProfile::sRGB();
    const auto matrix = lightMatrix(from, to);
    return matrix ? conversionByLight(format, profile, target, *matrix)
                  : conversionByLibrary(format, from, to);
}

RowSourcePointer rowsIn(const ColorProfile* target, RowSourcePointer rows, const ColorProfile* profile) {
    const RowFormat& format = rows->format();
    if (profile && (profile->model() != format.model || *profile == ColorProfile::sRGB()))
        profile = nullptr;
    const bool isThere = profile && target ? *profile == *target : !profile && !target;
    if (isThere && format.model == ColorModel::rgb)
        return rows;
    Conversion conversion = conversionInto(target, format, profile);
    if (!conversion)
        return rowsIn(target, std::move(rows), nullptr);
    RowFormat converted = format;
    converted.model = ColorModel::rgb;
    return std::make_unique<ConvertedRows>(std::move(rows), converted, std::move(conversion));
}

} // namespace

RowSourcePointer rowsInSRGB(RowSourcePointer rows, const ColorProfile* profile) {
    return rowsIn(nullptr, std::move(rows), profile);
}

RowSourcePointer rowsInProfile(RowSourcePointer rows, const ColorProfile& profile,
                               const ColorProfile& target) {
    return rowsIn(&target, std::move(rows), &profile);
}

RowSourcePointer rowsInGenericRGBA(RowSourcePointer rows, const ColorProfile* profile) {
    const ColorProfile target = ColorProfile::genericRGB();
    constexpr float opaque = 1;
    return rowsFaded(rowsOf8Bits(rowsIn(&target, std::move(rows), profile)), opaque);
}

} // namespace kestrine
