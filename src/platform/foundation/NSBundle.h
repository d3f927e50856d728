// NSBundle: the strings tables of the program in the user's language.
#pragma once

#include "platform/foundation/text/StringsTable.h"
#include "platform/host/process/Environment.h"

#include <mutex>

namespace kestrine {

/// Safe to use from several threads.
class NSBundle {
public:
    /// Tables are read from `<language>.lproj` in `resourceFolder`, and from English.lproj if the language
    /// does not have the table. The first of LC_ALL, LC_MESSAGES and LANG that is not empty selects the
    /// language: Japanese, or English for all other values.
    NSBundle(std::string resourceFolder, const Environment& environment);

    /// `mainBundle`: the resources of this program, see resourceFolderForProgram().
    static NSBundle& mainBundle();

    /// `localizedStringForKey:value:table:`: the string for `key` in the table, by default "Localizable". If
    /// there is none: `fallback`, or `key` if `fallback` is empty. A missing or malformed table counts as
    /// empty.
    NSString localizedString(const NSString& key, const NSString& fallback = {}, const NSString& table = {});

private:
    const StringsTable& tableNamed(const NSString& name);
    StringsTable readTable(const NSString& name) const;

    const std::string resourceFolder_;
    const std::string language_;
    std::mutex mutex_; // guards the map; a table in the map never changes
    std::map<NSString, StringsTable> tables_;
};

/// The resource folder of the program at `programPath`: `<prefix>/share/kestrine` for a program in
/// `<prefix>/bin`, or share/ in the source tree for a program in a build folder of that tree; "" if neither
/// exists.
std::string resourceFolderForProgram(const std::string& programPath);

} // namespace kestrine
