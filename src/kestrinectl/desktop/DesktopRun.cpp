#include "kestrinectl/desktop/DesktopRun.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/convert/ConvertCommand.h"
#include "kestrinectl/desktop/FirstMessage.h"
#include "kestrinectl/desktop/Notification.h"
#include "kestrinectl/desktop/Quoting.h"
#include "kestrinectl/sets/PresetStore.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/Words.h"
#include "platform/appkit/FileURI.h"

#include <sstream>

namespace kestrine {

namespace {

std::string pathIn(const std::string& uri) {
    if (Result<std::string> path = pathOfFileURI(uri))
        return *std::move(path);
    throw CommandError(uri + " is not a file on this computer; copy it here first");
}

/// Absolute, so that none of them is taken for an option or for standard input.
std::vector<std::string> pathsOf(const DesktopRun& request) {
    std::vector<std::string> paths;
    for (const std::string& marked : request.files) {
        const std::string word = typedWord(marked);
        if (!request.areURIs) {
            paths.push_back(absolutePath(word).native());
            continue;
        }
        std::istringstream lines(word);
        for (std::string uri; std::getline(lines, uri);)
            if (!uri.empty())
                paths.push_back(pathIn(uri));
    }
    if (paths.empty())
        throw CommandError("no pictures are selected");
    return paths;
}

/// The name of the set that `word` stands for. A word contains the name, not the position, which would mean
/// another set after a change.
std::string nameOfSet(const std::string& word) {
    const auto name = setNameOfWord(word);
    if (!name)
        throw CommandError(quoted(word) + " does not stand for a set", 2);
    PresetStore::load().positionNamed(*name);
    return *name;
}

} // namespace

void DesktopRun::run() const {
    FirstMessage first;
    try {
        const std::string name = nameOfSet(setWord);
        convertBySet(name, pathsOf(*this));
    } catch (const std::exception& failure) {
        std::vector<std::string> lines = {failure.what()};
        if (!first.text().empty())
            lines.insert(lines.begin(), first.text());
        showNotification("Not all pictures could be converted", lines);
        throw;
    }
}

} // namespace kestrine
