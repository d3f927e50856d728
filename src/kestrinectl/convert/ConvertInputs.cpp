#include "kestrinectl/convert/ConvertInputs.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertPictureSigns.h"
#include "kestrinectl/convert/FolderNames.h"
#include "kestrinectl/convert/OutputFolders.h"
#include "kestrinectl/convert/SeenPlaces.h"
#include "kestrinectl/text/ShownPath.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FileMark.h"
#include "platform/host/process/StopSignals.h"
#include "platform/imageio/ImageCodec.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fnmatch.h>

namespace kestrine {

namespace fs = std::filesystem;

namespace {

enum class Content { picture, unreadablePicture, other };

Content contentOf(const ByteReader& reader, const std::string& path) {
    std::array<std::uint8_t, pictureSignLength> buffer;
    const ByteView head(buffer.data(), reader.readAt(0, buffer));
    if (reader.failure())
        return Content::picture; // opening it reports the error
    if (codecFor(reader) != nullptr)
        return isCompressedFile(head) && !hasNameOfPicture(path) ? Content::other : Content::picture;
    const bool isPicture = hasNameOfPicture(path) || isForeignPicture(head);
    return isPicture ? Content::unreadablePicture : Content::other;
}

class Finder {
public:
    Finder(const std::vector<std::string>& arguments, const ConvertSearch& search, InputReceiver& receiver)
        : search_(search), outputFolders_(search, arguments), mayRepeat_(arguments.size() > 1),
          receiver_(receiver) {}

    void addArgument(const std::string& argument) {
        std::error_code ignored;
        if (fs::is_directory(argument, ignored))
            addFolder(withoutTrailingSeparator(argument));
        else if (argument.empty())
            complainOfFile("", "an empty argument names no file", kindOf(Reason::notFound));
        else
            addPicture(argument, std::nullopt);
    }

private:
    /// Arguments may name a picture several times; it is found once. A picture that is replaced would not be
    /// there for a link to it, so both count as one.
    void addPicture(const fs::path& file, std::optional<std::string> root) {
        ++pictures_;
        std::error_code ignored;
        const bool isReplacedLink = search_.replaces && fs::is_symlink(file, ignored);
        if (mayRepeat_ && !seen_.add(isReplacedLink ? canonicalPath(file) : file))
            return;
        const Result<FileMark> mark = markOfFile(file.native());
        receiver_.picture(
            {shownPath(file.native()), absolutePath(file).native(), std::move(root), mark ? mark->bytes : 0});
    }

    void addFolder(const fs::path& folder) {
        root_ = absolutePath(folder);
        hasSubfolders_ = false;
        const std::size_t picturesBefore = pictures_;
        const std::size_t filesBefore = unreadableFiles_, foldersBefore = unreadableFolders_;
        searchFolder(folder);
        if (pictures_ > picturesBefore || unreadableFolders_ > foldersBefore
            || StopSignalsNoted::noted() != 0)
            return;
        std::string addition;
        if (unreadableFiles_ > filesBefore)
            addition = " that can be read";
        else if (hasSubfolders_ && !isRecursive())
            addition = "; --recursive searches its sub-folders";
        const std::string shown = shownPath(folder.native());
        receiver_.finding({.source = shown,
                           .status = ConvertStatus::leftOut,
                           .reason = "no pictures" + addition,
                           .sentence = "no pictures in " + shown + addition,
                           .isFolder = true});
    }

    void searchFolder(const fs::path& folder) {
        FolderNames names;
        std::error_code error;
        for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
            if (const std::string name = it->path().filename(); !name.starts_with('.'))
                names.add(name);
        if (error)
            complainOfFolder(folder, error);
        names.sort();
        for (std::size_t i = 0; i < names.count() && StopSignalsNoted::noted() == 0; ++i)
            visit(folder / names[i]);
    }

    void visit(const fs::path& entry) {
        std::error_code error;
        const fs::file_status own = fs::symlink_status(entry, error);
        if (fs::is_directory(own))
            return visitFolder(entry);
        const fs::file_status status = fs::is_symlink(own) ? fs::status(entry, error) : own;
        if (fs::is_regular_file(status) && search_.replaces && fs::is_symlink(own) && isBelowRoot(entry))
            return;
        if (fs::is_regular_file(status))
            visitFile(entry);
        else if (error && (error != std::errc::no_such_file_or_directory || hasNameOfPicture(entry.native())))
            complainOfFile(entry, "cannot open: " + error.message(),
                           kindOf(systemFailure("", error.value()).reason));
        else if (!fs::is_directory(status))
            receiver_.otherFile();
    }

    /// Whether the search comes to the file that the link leads to.
    bool isBelowRoot(const fs::path& link) const {
        const fs::path folder = canonicalPath(link).parent_path(), root = canonicalPath(root_);
        const auto [end, rest] = std::ranges::mismatch(root, folder);
        return folder == root || (isRecursive() && end == root.end());
    }

    void visitFolder(const fs::path& folder) {
        hasSubfolders_ = true;
        if (!isRecursive())
            return;
        if (search_.allFolders || !outputFolders_.contain(folder))
            return searchFolder(folder);
        if (!outputFolders_.isNews(folder))
            return;
        const std::string shown = shownPath(folder.native());
        const std::string reason =
            std::string(outputFolders_.isOut(folder) ? "the folder of --out" : "a folder for results")
            + "; --all-folders searches it";
        receiver_.finding({.source = shown,
                           .status = ConvertStatus::leftOut,
                           .reason = reason,
                           .sentence = "left out " + shown + ", " + reason,
                           .isFolder = true});
    }

    /// Whether the globs select the file. They apply to its path below the given folder.
    bool isWanted(const fs::path& file) const {
        if (search_.included.empty() && search_.excluded.empty())
            return true;
        const std::string path = absolutePath(file).lexically_relative(root_).native();
        const auto matches = [&path](const std::string& glob) { return globMatches(glob, path); };
        return (search_.included.empty() || std::ranges::any_of(search_.included, matches))
               && std::ranges::none_of(search_.excluded, matches);
    }

    void visitFile(const fs::path& file) {
        if (!isWanted(file))
            return;
        if (search_.isResult && search_.isResult(absolutePath(file).native()))
            return receiver_.otherFile();
        const auto reader = readerOfPath(file.native());
        if (!reader)
            return complainOfFile(file, withoutPath(reader.failure().text, file.native()),
                                  kindOf(reader.failure().reason));
        switch (contentOf(**reader, file.native())) {
        case Content::picture:
            addPicture(file, root_.native());
            break;
        case Content::unreadablePicture:
            complainOfFile(file, "the file is not in a picture format that can be read",
                           kindOf(Reason::unsupported));
            break;
        case Content::other:
            receiver_.otherFile();
        }
    }

    bool isRecursive() const { return search_.recursive || search_.allFolders; }

    /// Reports a file once, even if several arguments name it. The same holds for pictures.
    void complainOfFile(const fs::path& file, const std::string& text, std::string_view kind) {
        if (mayRepeat_ && !file.empty() && !seen_.add(file))
            return;
        ConvertResult finding{.source = shownPath(file.native())};
        finding.complain(text, kind);
        receiver_.finding(std::move(finding));
        ++unreadableFiles_;
    }

    void complainOfFolder(const fs::path& folder, const std::error_code& error) {
        const std::string shown = shownPath(folder.native());
        ConvertResult finding{.source = shown,
                              .sentence = "cannot read the folder " + shown + ": " + error.message(),
                              .isFolder = true};
        finding.complain("cannot read the folder: " + error.message(),
                         kindOf(systemFailure("", error.value()).reason));
        receiver_.finding(std::move(finding));
        ++unreadableFolders_;
    }

    const ConvertSearch& search_;
    OutputFolders outputFolders_;
    const bool mayRepeat_;
    SeenPlaces seen_;
    fs::path root_; ///< the argument that is being searched
    bool hasSubfolders_ = false;
    std::size_t pictures_ = 0, unreadableFiles_ = 0, unreadableFolders_ = 0; ///< so far
    InputReceiver& receiver_;
};

} // namespace

bool globMatches(const std::string& glob, const std::string& path) {
    const std::string subject =
        glob.find('/') == std::string::npos ? fs::path(path).filename().native() : path;
    return ::fnmatch(glob.c_str(), subject.c_str(), 0) == 0;
}

bool mayFindOwnResults(const std::vector<std::string>& arguments, const ConvertSearch& search) {
    const bool isOneListing = arguments.size() == 1 && !search.recursive;
    return search.allFolders || (!isOneListing && OutputFolders(search, arguments).containArgument());
}

void findInputs(const std::vector<std::string>& arguments, const ConvertSearch& search,
                InputReceiver& receiver) {
    Finder finder(arguments, search, receiver);
    for (const std::string& argument : arguments)
        finder.addArgument(argument);
}

} // namespace kestrine
