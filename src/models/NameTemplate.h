// NameTemplate: how a result is named, such as "{stem}-{width}.{ext}".
#pragma once

#include "platform/host/Result.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace kestrine {

/// What names are made of.
struct NameFacts {
    std::string stem;      ///< of the source
    std::string extension; ///< of the result
    std::string set;       ///< the name of the preset
    std::uint32_t width = 0, height = 0;
    std::size_t number = 1, count = 1; ///< the source is the number-th of so many
    std::string date;                  ///< YYYY-MM-DD
};

class NameTemplate {
public:
    enum class Field : std::uint8_t { stem, ext, set, width, height, n, date };

    /// Fields stand in braces; "{{" and "}}" are braces. Fails with reason "malformed" and a sentence for the
    /// user if there is no such field, or if the name would not lie below its folder.
    static Result<NameTemplate> parse(const std::string& text);

    bool uses(Field field) const;
    /// Whether names depend on the picture and not only on its path.
    bool dependsOnPicture() const;

    /// A relative path below the folder of the result. Slashes in facts become "_", and so do parts of the
    /// path that would be empty, "." or "..".
    std::string nameFor(const NameFacts& facts) const;

    /// What was parsed.
    const std::string& text() const { return text_; }

    bool operator==(const NameTemplate&) const = default;

private:
    std::string text_;
    std::vector<std::variant<std::string, Field>> pieces_;
};

/// The path with underscores for parts that no file name can be ("", ".", ".."): relative, and inside its
/// folder.
std::string pathInside(const std::string& path);

} // namespace kestrine
