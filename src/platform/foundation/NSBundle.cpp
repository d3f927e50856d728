#include "platform/foundation/NSBundle.h"

#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/process/ProgramPath.h"

namespace kestrine {

namespace {

constexpr const char* englishFolder = "English.lproj";

/// The name of the language's folder.
std::string preferredLanguage(const Environment& environment) {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const std::string locale = environment.variable(name).value_or("");
        if (locale.empty())
            continue;
        return locale.substr(0, locale.find_first_of("_.@")) == "ja" ? "Japanese.lproj" : englishFolder;
    }
    return englishFolder;
}

} // namespace

std::string resourceFolderForProgram(const std::string& programPath) {
    std::string folder = folderOf(folderOf(programPath));
    const std::string installed = joinedPath(folder, "share/kestrine");
    if (itemExists(joinedPath(installed, englishFolder)))
        return installed;
    // A program that is not installed is a few levels below the top of the source tree.
    for (int levels = 0; levels < 4; levels++, folder = folderOf(folder)) {
        const std::string source = joinedPath(folder, "share");
        if (itemExists(joinedPath(source, englishFolder)))
            return source;
    }
    return "";
}

NSBundle::NSBundle(std::string resourceFolder, const Environment& environment)
    : resourceFolder_(std::move(resourceFolder)), language_(preferredLanguage(environment)) {}

NSBundle& NSBundle::mainBundle() {
    static NSBundle bundle(resourceFolderForProgram(pathOfThisProgram()), Environment::ofProcess());
    return bundle;
}

NSString NSBundle::localizedString(const NSString& key, const NSString& fallback, const NSString& table) {
    const StringsTable& texts = tableNamed(table.isEmpty() ? u"Localizable" : table);
    const auto entry = texts.find(key);
    if (entry != texts.end())
        return entry->second;
    return fallback.isEmpty() ? key : fallback;
}

const StringsTable& NSBundle::tableNamed(const NSString& name) {
    const std::lock_guard lock(mutex_);
    const auto known = tables_.find(name);
    return known != tables_.end() ? known->second : tables_.emplace(name, readTable(name)).first->second;
}

StringsTable NSBundle::readTable(const NSString& name) const {
    if (resourceFolder_.empty())
        return {};
    const std::string fileName = name.utf8() + ".strings";
    for (const std::string& language : {language_, std::string(englishFolder)}) {
        const std::string path = joinedPath(joinedPath(resourceFolder_, language), fileName);
        if (!itemExists(path))
            continue;
        const Result<Bytes> content = readSmallFile(path, maxStringsTable);
        Result<StringsTable> table = content ? parseStringsTable(*content) : content.failure();
        return table ? std::move(*table) : StringsTable();
    }
    return {};
}

} // namespace kestrine
