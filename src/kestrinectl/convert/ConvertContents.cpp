#include "kestrinectl/convert/ConvertContents.h"

namespace kestrine {

namespace {

using Kind = FileContents::Kind;

/// What the file is and what its result would be.
struct Words {
    std::string file, result;
};

Words wordsFor(const FileContents& contents) {
    const std::string count = std::to_string(contents.count);
    switch (contents.kind) {
    case Kind::animation:
        return {"an animation of " + count + " frames", "its first frame"};
    case Kind::pages:
        return {"a document of " + count + " pages", "its first page"};
    case Kind::layers:
        return {"a picture of " + count + (contents.count == 1 ? " layer" : " layers"), "the merged picture"};
    case Kind::raw:
        return {"a camera raw file", "the developed picture"};
    case Kind::drawing:
        return {"a drawing", "a bitmap"};
    default:
        return {"a picture", "another one"};
    }
}

} // namespace

std::optional<std::string> omissionIn(const FileContents& contents) {
    const std::string of = " 1 of " + std::to_string(contents.count) + " is converted";
    switch (contents.kind) {
    case Kind::animation:
        return "only frame" + of;
    case Kind::pages:
        return "only page" + of;
    default:
        return std::nullopt;
    }
}

std::string reasonNotToReplace(const FileContents& contents) {
    const Words words = wordsFor(contents);
    return "not replaced, because it is " + words.file + "; --first-only replaces it with " + words.result;
}

} // namespace kestrine
