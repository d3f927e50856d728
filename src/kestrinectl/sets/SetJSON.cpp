#include "kestrinectl/sets/SetJSON.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/sets/SetNames.h"
#include "kestrinectl/text/JSONText.h"
#include "kestrinectl/text/PlainNumber.h"
#include "platform/foundation/NSNumber.h"

#include <cmath>
#include <limits>

namespace kestrine {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

/// The words of an enumerated field.
struct FieldNames {
    std::string_view key;
    std::optional<std::string> (*nameOf)(std::int32_t);
    std::optional<std::int32_t> (*named)(const std::string&);
};
constexpr FieldNames enumerations[] = {
    {"resizeType", nameOfResizeType, resizeTypeNamed},
    {"formatType", nameOfFormat, formatNamed},
};

const FieldNames* namesOf(std::string_view key) {
    for (const FieldNames& names : enumerations)
        if (names.key == key)
            return &names;
    return nullptr;
}

ordered_json toJSON(const OptionalString& text) { return text ? textToJSON(text->utf8()) : ordered_json(); }

/// The number with the fewest digits that give the same value in single precision.
ordered_json toJSON(float value) {
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value > 0 ? "inf" : "-inf";
    return ordered_json::parse(plainNumber(value));
}

ordered_json toJSON(std::int8_t flag) {
    return flag == 0 || flag == 1 ? ordered_json(flag == 1) : ordered_json(static_cast<int>(flag));
}

ordered_json toJSON(std::int32_t value, std::string_view key) {
    const FieldNames* names = namesOf(key);
    const auto name = names == nullptr ? std::nullopt : names->nameOf(value);
    return name ? ordered_json(*name) : ordered_json(value);
}

Object textObjectFromJSON(const json& value) {
    const auto text = textFromJSON(value);
    return text ? NSString::fromUTF8(*text).object() : nullptr;
}

Object floatFromJSON(const json& value) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    if (value.is_number()) {
        const auto number = value.get<double>();
        const bool fits = std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
        return fits ? std::make_shared<NSNumber>(static_cast<float>(number)) : nullptr;
    }
    if (value == "nan")
        return std::make_shared<NSNumber>(std::numeric_limits<float>::quiet_NaN());
    if (value == "inf" || value == "-inf")
        return std::make_shared<NSNumber>(value == "inf" ? infinity : -infinity);
    return nullptr;
}

template <class T>
Object wholeFromJSON(const json& value) {
    const bool isHuge =
        value.is_number_unsigned() && value.get<std::uint64_t>() > std::numeric_limits<std::int32_t>::max();
    if (!value.is_number_integer() || isHuge)
        return nullptr;
    const auto number = value.get<std::int64_t>();
    if (number < std::numeric_limits<T>::min() || number > std::numeric_limits<T>::max())
        return nullptr;
    return std::make_shared<NSNumber>(static_cast<T>(number));
}

Object enumeratedFromJSON(const json& value, std::string_view key) {
    const FieldNames* names = namesOf(key);
    if (names == nullptr || !value.is_string())
        return wholeFromJSON<std::int32_t>(value);
    const auto number = names->named(value.get<std::string>());
    return number ? std::make_shared<NSNumber>(*number) : nullptr;
}

/// nil when `value` does not fit the field.
Object fromJSON(const json& value, const ResizeSet::Field& field) {
    if (std::holds_alternative<OptionalString ResizeSet::*>(field.member))
        return textObjectFromJSON(value);
    if (std::holds_alternative<float ResizeSet::*>(field.member))
        return floatFromJSON(value);
    if (std::holds_alternative<std::int32_t ResizeSet::*>(field.member))
        return enumeratedFromJSON(value, field.key);
    if (value.is_boolean())
        return std::make_shared<NSNumber>(value.get<bool>());
    return wholeFromJSON<std::int8_t>(value);
}

const ResizeSet::Field* fieldNamed(const std::string& key) {
    for (const ResizeSet::Field& field : ResizeSet::fields())
        if (field.isArchived() && field.key == key)
            return &field;
    return nullptr;
}

ordered_json valueToJSON(const ResizeSet& set, const ResizeSet::Field& field) {
    const Object value = set.valueForKey(NSString::fromUTF8(field.key));
    if (std::holds_alternative<OptionalString ResizeSet::*>(field.member))
        return toJSON(NSString::fromObject(value));
    const auto& number = static_cast<const NSNumber&>(*value);
    if (std::holds_alternative<float ResizeSet::*>(field.member))
        return toJSON(number.floatValue());
    if (std::holds_alternative<std::int32_t ResizeSet::*>(field.member))
        return toJSON(number.intValue(), field.key);
    return toJSON(number.charValue());
}

} // namespace

ordered_json toJSON(const ResizeSet& set) {
    ordered_json result = ordered_json::object();
    for (const ResizeSet::Field& field : ResizeSet::fields())
        if (field.isArchived())
            result[std::string(field.key)] = valueToJSON(set, field);
    return result;
}

std::shared_ptr<ResizeSet> setFromJSON(const json& json, const std::string& where) {
    if (!json.is_object())
        throw CommandError(where + " is not a JSON object");
    const auto set = std::make_shared<ResizeSet>();
    for (const auto& [key, value] : json.items()) {
        const ResizeSet::Field* field = fieldNamed(key);
        if (field == nullptr)
            throw CommandError(where + " has an unknown field \"" + key + "\"");
        const bool isNilText =
            value.is_null() && std::holds_alternative<OptionalString ResizeSet::*>(field->member);
        const Object object = isNilText ? nullptr : fromJSON(value, *field);
        if (object == nullptr && !isNilText)
            throw CommandError(where + " has an invalid value for \"" + key + "\": "
                               + value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
        set->setValueForKey(object, NSString::fromUTF8(key));
    }
    return set;
}

} // namespace kestrine
