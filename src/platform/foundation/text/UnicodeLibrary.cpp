#include "platform/foundation/text/UnicodeLibrary.h"

#include "platform/host/process/DynamicLibrary.h"

#include <optional>
#include <string>

namespace kestrine {

namespace {

// The names of ICU's files and functions contain the major version. These versions are tried, newest first.
constexpr int newestVersion = 90;
constexpr int oldestVersion = 60;

/// One of ICU's libraries. If it is missing, all its functions are null.
class VersionedLibrary {
public:
    /// `name` is the name without version, such as "libicuuc".
    explicit VersionedLibrary(const std::string& name) {
        for (int version = newestVersion; version >= oldestVersion && !library_; version--) {
            number_ = std::to_string(version);
            if (const auto opened = DynamicLibrary::open({(name + ".so." + number_).c_str()}))
                library_ = *opened;
        }
    }

    template <class Function>
    void bind(Function*& function, const std::string& name) const {
        function = library_ ? library_->symbol<Function>((name + "_" + number_).c_str()) : nullptr;
    }

private:
    std::optional<DynamicLibrary> library_;
    std::string number_;
};

const VersionedLibrary& commonLibrary() {
    static const VersionedLibrary library("libicuuc");
    return library;
}

UnicodeCaseFunctions openCaseFunctions() {
    UnicodeCaseFunctions functions;
    commonLibrary().bind(functions.toUpper, "u_strToUpper");
    commonLibrary().bind(functions.toLower, "u_strToLower");
    commonLibrary().bind(functions.fold, "u_foldCase");
    return functions;
}

UnicodeConverterFunctions openConverterFunctions() {
    UnicodeConverterFunctions functions;
    commonLibrary().bind(functions.open, "ucnv_open");
    commonLibrary().bind(functions.close, "ucnv_close");
    commonLibrary().bind(functions.setToUnicodeCallback, "ucnv_setToUCallBack");
    commonLibrary().bind(functions.toUnicode, "ucnv_toUChars");
    commonLibrary().bind(functions.stopAtMalformed, "UCNV_TO_U_CALLBACK_STOP");
    return functions;
}

UnicodeNormalizerFunctions openNormalizerFunctions() {
    UnicodeNormalizerFunctions functions;
    commonLibrary().bind(functions.canonical, "unorm2_getNFDInstance");
    commonLibrary().bind(functions.compatible, "unorm2_getNFKDInstance");
    commonLibrary().bind(functions.decompose, "unorm2_normalize");
    return functions;
}

UnicodeCollationFunctions openCollationFunctions() {
    const VersionedLibrary collation("libicui18n");
    UnicodeCollationFunctions functions;
    collation.bind(functions.open, "ucol_open");
    collation.bind(functions.setAttribute, "ucol_setAttribute");
    collation.bind(functions.compare, "ucol_strcoll");
    return functions;
}

} // namespace

const UnicodeCaseFunctions& unicodeCaseFunctions() {
    static const UnicodeCaseFunctions functions = openCaseFunctions();
    return functions;
}

const UnicodeConverterFunctions& unicodeConverterFunctions() {
    static const UnicodeConverterFunctions functions = openConverterFunctions();
    return functions;
}

const UnicodeNormalizerFunctions& unicodeNormalizerFunctions() {
    static const UnicodeNormalizerFunctions functions = openNormalizerFunctions();
    return functions;
}

const UnicodeCollationFunctions& unicodeCollationFunctions() {
    static const UnicodeCollationFunctions functions = openCollationFunctions();
    return functions;
}

} // namespace kestrine
