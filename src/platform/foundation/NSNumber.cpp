#include "platform/foundation/NSNumber.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <type_traits>

namespace kestrine {

namespace {

/// Rounds towards zero and limits the result to the range of Integer; NaN gives 0. The upper limit is
/// compared as the next power of two, because a double cannot always represent the limit itself.
template <class Integer>
Integer integerFromDouble(double value) {
    using Limits = std::numeric_limits<Integer>;
    constexpr Integer half = Limits::max() / 2 + 1;
    constexpr double aboveLargest = 2.0 * static_cast<double>(half);
    if (value >= aboveLargest)
        return Limits::max();
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    return value == value ? static_cast<Integer>(value) : Integer{0};
}

/// The result of %0.<digits>g in the C locale. NaN has no sign.
std::string generalText(double value, int digits) {
    std::array<char, 40> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), std::isnan(value) ? std::fabs(value) : value,
                      std::chars_format::general, digits);
    return {text.data(), end.ptr};
}

} // namespace

template <class T>
T NSNumber::as() const {
    return std::visit(
        [](auto value) {
            if constexpr (std::is_floating_point_v<decltype(value)> && std::is_integral_v<T>)
                return integerFromDouble<T>(value);
            else
                return static_cast<T>(value);
        },
        value_);
}

template std::int8_t NSNumber::as<std::int8_t>() const;
template std::int16_t NSNumber::as<std::int16_t>() const;
template std::int32_t NSNumber::as<std::int32_t>() const;
template std::uint32_t NSNumber::as<std::uint32_t>() const;
template std::int64_t NSNumber::as<std::int64_t>() const;
template float NSNumber::as<float>() const;
template double NSNumber::as<double>() const;

bool NSNumber::boolValue() const {
    return std::visit([](auto value) { return value != decltype(value){}; }, value_);
}

std::string NSNumber::stringValue() const {
    return std::visit(
        [](auto value) {
            if constexpr (std::is_same_v<decltype(value), float>)
                return generalText(value, 7);
            else if constexpr (std::is_same_v<decltype(value), double>)
                return generalText(value, 16);
            else
                return std::to_string(+value);
        },
        value_);
}

} // namespace kestrine
