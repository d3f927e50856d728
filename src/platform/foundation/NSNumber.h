// NSNumber: a number that keeps its type.
#pragma once

#include "platform/foundation/NSObject.h"

#include <cstdint>
#include <string>
#include <variant>

namespace kestrine {

class NSNumber final : public NSObject {
public:
    using Value = std::variant<bool, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                               std::uint32_t, std::int64_t, std::uint64_t, float, double>;

    explicit NSNumber(Value value) : value_(value) {}

    const Value& value() const { return value_; }

    /// The number converted to another type. Integers wrap around. Floating-point numbers are rounded towards
    /// zero and limited to the range of the integer type; NaN gives 0.
    std::int8_t charValue() const { return as<std::int8_t>(); }
    std::int16_t shortValue() const { return as<std::int16_t>(); }
    std::int32_t intValue() const { return as<std::int32_t>(); }
    std::uint32_t unsignedIntValue() const { return as<std::uint32_t>(); }
    std::int64_t longLongValue() const { return as<std::int64_t>(); }
    float floatValue() const { return as<float>(); }
    double doubleValue() const { return as<double>(); }
    bool boolValue() const;
    /// `stringValue`: integers in decimal, floats as by %0.7g, doubles as by %0.16g. NaN has no sign.
    std::string stringValue() const;

    bool operator==(const NSNumber& other) const { return value_ == other.value_; }

private:
    template <class T>
    T as() const;

    const Value value_;
};

} // namespace kestrine
