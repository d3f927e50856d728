#include "models/NameTemplate.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrine {

namespace {

/// The names of the fields, in the order of NameTemplate::Field.
constexpr std::array<std::string_view, 7> fieldNames = {"stem", "ext", "set", "width", "height", "n", "date"};

Failure malformed(const std::string& sentence) { return {Reason::malformed, sentence}; }

Failure unknownField(std::string_view name) {
    std::string known;
    for (const std::string_view field : fieldNames)
        known += (known.empty() ? "{" : ", {") + std::string(field) + "}";
    return malformed("there is no field {" + std::string(name) + "}; the fields are " + known);
}

std::vector<std::string> partsOf(const std::string& path) {
    std::vector<std::string> parts(1);
    for (const char c : path)
        if (c == '/')
            parts.emplace_back();
        else
            parts.back() += c;
    return parts;
}

bool isNotAName(const std::string& part) { return part.empty() || part == "." || part == ".."; }

std::string padded(std::size_t number, std::size_t count) {
    const std::string digits = std::to_string(number);
    const std::size_t length = std::to_string(count).size();
    return std::string(length - std::min(length, digits.size()), '0') + digits;
}

std::string valueOf(NameTemplate::Field field, const NameFacts& facts) {
    switch (field) {
    case NameTemplate::Field::stem:
        return facts.stem;
    case NameTemplate::Field::ext:
        return facts.extension;
    case NameTemplate::Field::set:
        return facts.set;
    case NameTemplate::Field::width:
        return std::to_string(facts.width);
    case NameTemplate::Field::height:
        return std::to_string(facts.height);
    case NameTemplate::Field::n:
        return padded(facts.number, facts.count);
    default:
        return facts.date;
    }
}

} // namespace

Result<NameTemplate> NameTemplate::parse(const std::string& text) {
    NameTemplate result;
    result.text_ = text;
    std::string literal, outline; // of which a field is one letter
    const auto endLiteral = [&] {
        if (!literal.empty())
            result.pieces_.emplace_back(std::exchange(literal, {}));
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isDoubled = i + 1 < text.size() && text[i + 1] == c;
        if ((c == '{' || c == '}') && isDoubled) {
            ++i;
        } else if (c == '}') {
            return malformed("a } without a { before it; }} stands for a brace");
        } else if (c == '{') {
            const std::size_t end = text.find('}', i);
            if (end == std::string::npos)
                return malformed("a { without a } after it; {{ stands for a brace");
            const std::string_view name = std::string_view(text).substr(i + 1, end - i - 1);
            const auto* field = std::ranges::find(fieldNames, name);
            if (field == fieldNames.end())
                return unknownField(name);
            endLiteral();
            result.pieces_.emplace_back(static_cast<Field>(field - fieldNames.begin()));
            outline += 'x';
            i = end;
            continue;
        }
        literal += c;
        outline += c;
    }
    endLiteral();
    if (std::ranges::any_of(partsOf(outline), isNotAName))
        return malformed(
            "a name must not be empty, begin or end with a slash, or contain the folders . or ..");
    return result;
}

bool NameTemplate::uses(Field field) const {
    return std::ranges::find(pieces_, decltype(pieces_)::value_type(field)) != pieces_.end();
}

bool NameTemplate::dependsOnPicture() const {
    return uses(Field::width) || uses(Field::height) || uses(Field::date);
}

std::string NameTemplate::nameFor(const NameFacts& facts) const {
    std::string path;
    for (const auto& piece : pieces_) {
        if (const auto* literal = std::get_if<std::string>(&piece)) {
            path += *literal;
            continue;
        }
        std::string value = valueOf(std::get<Field>(piece), facts);
        std::ranges::replace(value, '/', '_');
        path += value;
    }
    return pathInside(path);
}

std::string pathInside(const std::string& path) {
    std::string result;
    for (std::string& part : partsOf(path)) {
        if (isNotAName(part))
            part = part.empty() ? "_" : std::string(part.size(), '_');
        result += (result.empty() ? "" : "/") + part;
    }
    return result;
}

} // namespace kestrine
