#include "platform/imageio/svg/Fonts.h"

#include "platform/imageio/svg/Drawing.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kestrine::svg {

namespace {

constexpr std::array genericFamilies = {"sans-serif", "serif", "monospace"};
constexpr std::array styles = {"", ":bold", ":italic", ":bold:italic"};
/// For scripts that the usual fonts may lack.
constexpr std::array languages = {"ja", "zh-cn", "ko", "ar", "he", "hi", "th"};

/// Families that programs name, and what they are.
constexpr std::array<std::pair<const char*, const char*>, 10> wellKnownFamilies = {{
    {"Times New Roman", "serif"},
    {"Times", "serif"},
    {"Georgia", "serif"},
    {"Garamond", "serif"},
    {"Palatino", "serif"},
    {"Courier New", "monospace"},
    {"Courier", "monospace"},
    {"Consolas", "monospace"},
    {"Menlo", "monospace"},
    {"Monaco", "monospace"},
}};

const std::uint8_t* bytesOf(const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.c_str());
}

/// A font that the system chooses.
struct Font {
    std::string family, file;
    int index = 0;
};

/// The system's fonts, from which ours are chosen.
class SystemFonts {
public:
    explicit SystemFonts(const Functions& library) : library_(library), config_(library.systemFonts()) {}
    ~SystemFonts() {
        if (config_ != nullptr)
            library_.destroyFontConfig(config_);
    }
    SystemFonts(const SystemFonts&) = delete;
    SystemFonts& operator=(const SystemFonts&) = delete;

    /// The best font for a description such as "serif:bold"; its file is empty if there are no fonts.
    Font best(const std::string& description) const {
        Font font;
        if (config_ == nullptr)
            return font;
        constexpr int forPattern = 0;
        FontPattern* wanted = library_.parsePattern(bytesOf(description));
        library_.substitute(config_, wanted, forPattern);
        library_.substituteDefaults(wanted);
        int result = 0;
        if (FontPattern* found = library_.match(config_, wanted, &result)) {
            font = {textOf(found, "family"), textOf(found, "file"), 0};
            library_.numberOf(found, "index", 0, &font.index);
            library_.destroyPattern(found);
        }
        library_.destroyPattern(wanted);
        return font;
    }

private:
    std::string textOf(FontPattern* pattern, const char* name) const {
        std::uint8_t* text = nullptr;
        constexpr int found = 0;
        return library_.stringOf(pattern, name, 0, &text) == found ? reinterpret_cast<const char*>(text) : "";
    }

    const Functions& library_;
    FontConfig* const config_;
};

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '&' || c == '<')
            result += c == '&' ? "&amp;" : "&lt;";
        else
            result += c;
    }
    return result;
}

std::string aliasRule(const std::string& family, const std::string& shown) {
    return "<alias binding=\"same\"><family>" + escaped(family) + "</family><prefer><family>" + escaped(shown)
           + "</family></prefer></alias>";
}

/// Which of the families is shown for which name. Others are shown as sans-serif.
std::string rulesFor(const SystemFonts& system) {
    std::string rules = "<?xml version=\"1.0\"?><fontconfig>";
    for (const char* generic : genericFamilies)
        rules += aliasRule(generic, system.best(generic).family);
    for (const auto& [name, generic] : wellKnownFamilies)
        rules += aliasRule(name, system.best(generic).family);
    return rules + "<match><edit name=\"family\" mode=\"append_last\"><string>"
           + escaped(system.best("sans-serif").family) + "</string></edit></match></fontconfig>";
}

std::set<std::string> filesOf(const SystemFonts& system) {
    std::set<std::string> files;
    for (const char* family : genericFamilies)
        for (const char* style : styles)
            files.insert(system.best(std::string(family) + style).file);
    for (const char* language : languages)
        files.insert(system.best(std::string("sans-serif:lang=") + language).file);
    files.erase("");
    return files;
}

/// Opens the file of each font, so that no library needs to open it again.
void openFaces(const Functions& library, FontConfig* fonts) {
    constexpr int applicationFonts = 1;
    FontLibrary* faces = nullptr;
    const FontSet* set = library.fontsOf(fonts, applicationFonts);
    if (set == nullptr || library.openFontLibrary(&faces) != 0)
        return;
    for (FontPattern* pattern : std::vector<FontPattern*>(set->fonts, set->fonts + set->count)) {
        std::uint8_t* file = nullptr;
        int index = 0;
        FontFace* face = nullptr;
        if (library.stringOf(pattern, "file", 0, &file) == 0
            && library.numberOf(pattern, "index", 0, &index) == 0
            && library.openFace(faces, reinterpret_cast<const char*>(file), index, &face) == 0)
            library.addFace(pattern, "ftface", face);
    }
}

/// The libraries print warnings.
void silence(const Functions& library) {
    constexpr int allLevels = ~3; // the first two bits are flags
    for (const char* domain : {"Pango", "GLib", "GLib-GObject", "GLib-GIO", "GdkPixbuf", "librsvg", "Gdk"})
        library.setLogHandler(
            domain, allLevels, [](const char*, int, const char*, void*) {}, nullptr);
}

} // namespace

Fonts::Fonts(const Functions& library) : library_(library), map_(nullptr) {
    silence(library);
    const SystemFonts system(library);
    FontConfig* const fonts = library.createFontConfig();
    for (const std::string& file : filesOf(system))
        library.addFontFile(fonts, bytesOf(file));
    library.addRules(fonts, bytesOf(rulesFor(system)), 0);
    openFaces(library, fonts);
    map_ = library.createFontMap();
    library.setFontConfig(map_, fonts);
    warmUp();
}

Fonts& Fonts::opened(const Functions& library) {
    static Fonts& fonts = *new Fonts(library); // threads may draw until the end of the process
    return fonts;
}

std::unique_lock<std::mutex> Fonts::use() {
    std::unique_lock lock(mutex_);
    library_.useFontMap(map_);
    return lock;
}

void Fonts::warmUp() {
    std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\" "
                       "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"9\" height=\"9\"><text>";
    for (const char* family : genericFamilies)
        for (const char* style : {"", "font-weight=\"bold\"", "font-style=\"italic\"",
                                  "font-weight=\"bold\" font-style=\"italic\""})
            text += "<tspan font-family=\"" + std::string(family) + "\" " + style + ">A</tspan>";
    // a letter of each of the scripts, and a picture
    text +=
        "\u3042\u4e2d\ud55c\u0627\u05d0\u0905\u0e01</text><image width=\"1\" height=\"1\" "
        "xlink:href=\"data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9"
        "QDwADhgGAWjR9awAAAABJRU5ErkJggg==\"/></svg>";
    library_.useFontMap(map_);
    if (const Result<DocumentPointer> document = readDocument(library_, Bytes(text.begin(), text.end())))
        (void)drawArea(library_, **document, {9, 9}, {1, 1, 0, 0, 9, 9});
}

} // namespace kestrine::svg
