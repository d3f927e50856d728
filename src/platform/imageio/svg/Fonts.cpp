#include "platform/imageio/svg/Fonts.h"

#include "platform/imageio/svg/Drawing.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kestrine::svg {

namespace {

constexpr std::array genericFamilies = {"sans-serif", "serif", "monospace"};
constexpr std::array styles = {"", ":bold", ":italic", ":bold:italic"};
/// Languages with scripts that the usual fonts may lack.
constexpr std::array languages = {"ja", "zh-cn", "ko", "ar", "he", "hi", "th"};

/// Families that drawings name most, and their kind. Systems have many of them, or fonts of the same widths.
constexpr std::array<std::pair<const char*, const char*>, 15> wellKnownFamilies = {{
    {"Arial", "sans-serif"},
    {"Helvetica", "sans-serif"},
    {"Verdana", "sans-serif"},
    {"Calibri", "sans-serif"},
    {"Times New Roman", "serif"},
    {"Times", "serif"},
    {"Georgia", "serif"},
    {"Cambria", "serif"},
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
            font = {textOf(found, "family"), textOf(found, "file")};
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

/// The families that are shown, and which of them for which name.
struct Shown {
    std::map<std::string, std::string> families; ///< from the name to the family
    std::set<std::string> files;

    /// Adds a name that is shown like `alike`, in all styles.
    void add(const SystemFonts& system, const std::string& name, const std::string& alike) {
        const std::string family = system.best(alike).family;
        const bool isNew = std::none_of(families.begin(), families.end(),
                                        [&](const auto& other) { return other.second == family; });
        families[name] = family;
        for (const char* style : styles)
            if (isNew)
                files.insert(system.best(alike + style).file);
    }
};

Shown shownBy(const SystemFonts& system) {
    Shown shown;
    for (const char* generic : genericFamilies)
        shown.add(system, generic, generic);
    const std::string unknown = system.best("").family;
    for (const auto& [name, kind] : wellKnownFamilies)
        shown.add(system, name, system.best(name).family == unknown ? kind : name);
    for (const char* language : languages)
        shown.files.insert(system.best(std::string("sans-serif:lang=") + language).file);
    shown.files.erase("");
    return shown;
}

/// A name without a rule is shown as sans-serif.
std::string rulesFor(const Shown& shown) {
    std::string rules = "<?xml version=\"1.0\"?><fontconfig>";
    for (const auto& [name, family] : shown.families)
        rules += aliasRule(name, family);
    return rules + "<match><edit name=\"family\" mode=\"append_last\"><string>"
           + escaped(shown.families.at("sans-serif")) + "</string></edit></match></fontconfig>";
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

} // namespace

Fonts::Fonts(const Functions& library) : library_(library), map_(nullptr) {
    const Shown shown = shownBy(SystemFonts(library));
    FontConfig* const fonts = library.createFontConfig();
    for (const std::string& file : shown.files)
        library.addFontFile(fonts, bytesOf(file));
    library.addRules(fonts, bytesOf(rulesFor(shown)), 0);
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
    std::vector<std::string> names(genericFamilies.begin(), genericFamilies.end());
    for (const auto& [name, kind] : wellKnownFamilies)
        names.push_back(name);
    for (const std::string& name : names)
        for (const char* style : {"", "font-weight=\"bold\"", "font-style=\"italic\"",
                                  "font-weight=\"bold\" font-style=\"italic\""})
            text += "<tspan font-family=\"" + name + "\" " + style + ">A</tspan>";
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
