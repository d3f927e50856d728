// DesktopRun: what the actions in file managers start. Converts the selected files by a set and shows a
// failure as a notification of the desktop, because nobody reads standard error there.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

struct DesktopRun {
    std::string setWord;            ///< see wordOfSetName()
    std::vector<std::string> files; ///< paths, or URIs
    bool areURIs = false;           ///< each word is one URI, or several with newlines between them

    /// Converts in one run. Throws CommandError after the notification.
    void run() const;
};

} // namespace kestrine
