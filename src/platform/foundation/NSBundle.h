// NSBundle: the program's resources, which are its strings tables, in the user's language.
#pragma once

#include "platform/foundation/text/StringsTable.h"
#include "platform/host/process/Environment.h"

#include <mutex>

namespace kestrine {

/// Safe to use from several threads.
class NSBundle {
public:
    /// Tables are looked for in <resourceFolder>/<language>.lproj, in English where the language has no
    /// such table. The language is the one of LC_ALL, LC_MESSAGES or LANG, whichever is the first that is
    /// set: Japanese or, for everything else, English.
    NSBundle(std::string resourceFolder, const Environment& environment);

    /// `mainBundle`: the resources of this program, found beside it (see resourceFolderForProgram).
    static NSBundle& mainBundle();

    /// `localizedStringForKey:value:table:`: the text under `key` in the table, the default one
    /// ("Localizable") when it is not named. Where there is none: `fallback`, or the key itself when that is
    /// empty. A table that is missing or broken has no texts.
    NSString localizedString(const NSString& key, const NSString& fallback = {}, const NSString& table = {});

private:
    const StringsTable& tableNamed(const NSString& name);
    StringsTable readTable(const NSString& name) const;

    const std::string resourceFolder_;
    const std::string language_;
    std::mutex mutex_; // guards the tables; one that is in the map never changes
    std::map<NSString, StringsTable> tables_;
};

/// Where the resources of the program at `programPath` lie: <prefix>/share/kestrine for one installed in
/// <prefix>/bin, the source tree's share/ for one in a build folder inside of it; "" when there is neither.
std::string resourceFolderForProgram(const std::string& programPath);

} // namespace kestrine
