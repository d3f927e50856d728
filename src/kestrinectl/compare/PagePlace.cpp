#include "kestrinectl/compare/PagePlace.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ConvertPictureSigns.h"
#include "kestrinectl/text/ShownPath.h"
#include "kestrinectl/text/Words.h"
#include "platform/host/StringBytes.h"
#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/process/ChildProcess.h"
#include "platform/host/process/Environment.h"
#include "platform/host/process/StopSignals.h"

#include <algorithm>
#include <filesystem>

namespace kestrine {

namespace {

constexpr const char* browserStarter = "xdg-open";

/// Each run replaces it, so that pages do not pile up.
std::string temporaryPage() {
    const std::string cache = Environment::ofProcess().xdgCacheHome();
    if (cache.empty())
        throw CommandError("there is no home folder for a temporary page; give --output FILE");
    return joinedPath(joinedPath(cache, "kestrine"), "preview.html");
}

} // namespace

void PagePlace::addTo(CLI::App& command) {
    command.add_option("-o,--output", output_, "The page to write (default with --open: a temporary page)")
        ->option_text("FILE");
    command.add_flag("--overwrite", overwrites_,
                     "Replace the page if the file exists already (default: an error)");
    command.add_flag("--open", opens_, "Open the page in the browser");
}

std::string PagePlace::typedPath() const { return output_ ? typedWord(*output_) : temporaryPage(); }

std::string PagePlace::path() const { return absolutePath(typedPath()).native(); }

void PagePlace::check(const std::vector<ConvertInput>& pictures) const {
    if (!output_ && !opens_)
        throw CommandError("the page needs a place: give --output FILE, or --open for a temporary page", 2);
    if (!output_)
        return;
    const std::string word = typedWord(*output_), shown = shownPath(word);
    if (word == "-" || nameOf(word).empty())
        throw CommandError("--output takes a file, such as page.html", 2);
    if (hasNameOfPicture(word))
        throw CommandError(shown + " is the name of a picture; --output takes a page, such as page.html", 2);
    const std::string place = path();
    if (folderExists(place))
        throw CommandError(shown + " is a folder; --output takes a file");
    if (!folderExists(folderOf(place)))
        throw CommandError(shown + " cannot be written: there is no folder " + shownPath(folderOf(word)));
    const std::string target = canonicalPath(place).native();
    if (std::ranges::any_of(pictures, [&](const ConvertInput& picture) {
            return canonicalPath(picture.path).native() == target;
        }))
        throw CommandError(shown + " is one of the pictures; --output takes another file", 2);
    if (isTaken(place) && !overwrites_)
        throw CommandError(shown + " exists already; --overwrite replaces it");
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(place, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw CommandError(shown + " is not a regular file; --output takes another file");
}

void PagePlace::writeAndOpen(const std::string& page) const {
    write(page);
    if (opens_)
        open();
}

void PagePlace::write(const std::string& page) const {
    const std::string place = path();
    const StopSignalsBlocked untilWritten;
    const Result<void> written =
        output_ ? writeFile(place, bytesOf(page), overwrites_ ? Overwrite::yes : Overwrite::no,
                            Durability::cached)
                : replaceFile(place, bytesOf(page), Durability::cached);
    if (!written)
        throw CommandError(shownPath(typedPath()) + ": "
                           + withoutPath(withoutPath(written.failure().text, place), nameOf(place)));
}

void PagePlace::open() const {
    const std::string advice = "; open " + path() + " in a browser yourself";
    Result<ChildProcess> started = ChildProcess::start(browserStarter, {path()});
    if (!started)
        throw CommandError(started.failure().text + " (Debian package xdg-utils)" + advice);
    const Result<ChildEnd> end = started->wait();
    if (!end)
        throw CommandError(end.failure().text + advice);
    if (end->bySignal || end->code != 0)
        throw CommandError(std::string(browserStarter) + " could not open the page ("
                           + (end->bySignal ? "signal " : "exit status ") + std::to_string(end->code) + ")"
                           + advice);
}

} // namespace kestrine
