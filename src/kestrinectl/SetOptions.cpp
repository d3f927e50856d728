#include "kestrinectl/SetOptions.h"

#include "kestrinectl/SetNames.h"
#include "platform/foundation/NSNumber.h"

namespace kestrine {

namespace {

template <class T>
void put(ResizeSet& set, const char16_t* key, T value) {
    set.setValueForKey(std::make_shared<NSNumber>(value), key);
}

template <class T>
void putIfSaid(ResizeSet& set, const char16_t* key, const std::optional<T>& value) {
    if (value)
        put(set, key, *value);
}

/// --exif and --no-exif and their like; the last one said counts.
void addSwitch(CLI::App& command, const std::string& name, std::optional<bool>& value, const std::string& help) {
    command.add_flag_callback("--" + name, [&value] { value = true; }, help);
    command.add_flag_callback("--no-" + name, [&value] { value = false; }, "The opposite");
}

} // namespace

void SetOptions::addTo(CLI::App& command) {
    const auto length = CLI::Range(1.0, 1000000.0);
    CLI::Option* w =
        command.add_option("--width", width, "Scale to this width; the height follows unless given too");
    CLI::Option* h =
        command.add_option("--height", height, "Scale to this height; the width follows unless given too");
    CLI::Option* p = command.add_option("--percent", percent, "Scale both sides by this percentage");
    CLI::Option* l = command.add_option("--longest", longest, "Scale the longer side to this length");
    CLI::Option* k = command.add_flag("--keep-size", keepsSize, "Do not scale");
    w->check(length), h->check(length), l->check(length);
    p->check(CLI::Range(0.001, 100000.0));
    for (CLI::Option* side : {w, h})
        side->excludes(p)->excludes(l)->excludes(k);
    p->excludes(l)->excludes(k);
    l->excludes(k);
    command.add_option("--format", format, "jpeg, png, tiff or gif")->check(CLI::IsMember(formatNames()));
    command.add_option("--quality", quality, "JPEG quality in percent")->check(CLI::Range(0.0, 100.0));
    addSwitch(command, "exif", exif, "Carry the camera's data into JPEG files");
    addSwitch(command, "convert-resolution", convertsResolution, "Count sizes in pixels, not in points");
    addSwitch(command, "rotate", rotates, "Turn pictures upright by their EXIF orientation");
    addSwitch(command, "high-quality", highQuality, "Scale with the Lanczos filter");
    addSwitch(command, "replace", replaces,
              "Put the result in the original's place, and the original into the trash");
}

void SetOptions::applyTo(ResizeSet& set) const {
    if (name)
        set.setValueForKey(NSString::fromUTF8(*name).object(), u"name");
    if (width || height) {
        put(set, u"resizeType", std::int32_t{ResizeTypeSize});
        put(set, u"width", width.value_or(0.0F));
        put(set, u"height", height.value_or(0.0F));
    }
    if (percent)
        put(set, u"resizeType", std::int32_t{ResizeTypeRatio});
    if (longest)
        put(set, u"resizeType", std::int32_t{ResizeTypeMaxSize});
    if (keepsSize)
        put(set, u"resizeType", unscaledResizeType);
    putIfSaid(set, u"ratio", percent);
    putIfSaid(set, u"maxSize", longest);
    if (format)
        put(set, u"formatType", *formatNamed(*format));
    putIfSaid(set, u"compression", quality);
    putIfSaid(set, u"attachExifData", exif);
    putIfSaid(set, u"convertResolution", convertsResolution);
    putIfSaid(set, u"autoRotate", rotates);
    putIfSaid(set, u"highQuality", highQuality);
    putIfSaid(set, u"replaceFile", replaces);
}

} // namespace kestrine
