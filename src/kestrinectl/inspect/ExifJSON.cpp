#include "kestrinectl/inspect/ExifJSON.h"

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "kestrinectl/text/JSONText.h"
#include "platform/foundation/NSException.h"

#include <cmath>

namespace kestrine {

namespace {

using nlohmann::ordered_json;

ordered_json toJSON(const NSString& text) { return textToJSON(text.utf8()); }

ordered_json toJSON(const NSNumber& number) {
    const double value = number.doubleValue();
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value > 0 ? "inf" : "-inf";
    return std::visit([](auto stored) { return ordered_json(stored); }, number.value());
}

ordered_json toJSON(const ByteBlock& bytes) { return bytesToJSON(bytes); }

ordered_json toJSON(const NumberList& list) {
    ordered_json numbers = ordered_json::array();
    for (const NSNumber& number : list)
        numbers.push_back(toJSON(number));
    return numbers;
}

ordered_json toJSON(StoredValue value) {
    if (!value)
        return nullptr;
    return std::visit([](const auto& content) { return toJSON(content); }, *value);
}

ordered_json toJSON(const OptionalNumber& number) { return number ? toJSON(*number) : nullptr; }

ordered_json toJSON(const TagDictionaryPointer& tags) {
    if (!tags)
        return nullptr;
    ordered_json directories = ordered_json::object();
    for (const auto& [name, directory] : *tags) {
        ordered_json& values = directories[name] = ordered_json::object();
        for (const auto& [key, value] : *directory)
            values[key] = toJSON(&value);
    }
    return directories;
}

template <class Ask>
ordered_json answerOf(const Ask& ask) {
    try {
        return toJSON(ask());
    } catch (const NSException& raised) {
        return {{"raises", raised.name()}};
    }
}

ordered_json valuesJSON(ExifTagReader* reader) {
    ordered_json values = ordered_json::object();
#define VALUE(name, directory, tag, rule, Kind)                                                              \
    values[#name] = reader ? answerOf([&] { return reader->name(); }) : nullptr;
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
    return values;
}

ordered_json displayJSON(ExifTagReader* reader) {
    ordered_json texts = ordered_json::object();
    const auto add = [&](const char* name, NSString (ExifTagReader::*accessor)()) {
        texts[name] = reader ? answerOf([&] { return (reader->*accessor)(); }) : "N/A";
    };
#define FORMATTED(name, valueAccessor, format, valueFormatted) add(#name, &ExifTagReader::name);
#define LOCALIZED(name, valueAccessor, key) add(#name, &ExifTagReader::name);
#define COMPUTED(name) add(#name, &ExifTagReader::name);
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
    return texts;
}

/// "Exif information is not available", in the user's language.
NSString textWithoutReader() { return ExifTagReader::tagDescriptionWithPath(u""); }

} // namespace

ordered_json exifJSON(const NSString& path, ExifTagReader* reader) {
    return {{"path", toJSON(path)},
            {"reader", reader != nullptr},
            {"tags", reader ? answerOf([&] { return reader->tagDictionary(); }) : ordered_json::object()},
            {"values", valuesJSON(reader)},
            {"display", displayJSON(reader)},
            {"description",
             reader ? answerOf([&] { return reader->tagDescription(); }) : toJSON(textWithoutReader())}};
}

} // namespace kestrine
