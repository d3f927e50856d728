// ConvertInputs: the pictures that the arguments of `convert` name.
#pragma once

#include "kestrinectl/convert/ConvertResult.h"
#include "models/ResizeSet.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// One picture to be converted.
struct ConvertInput {
    std::string shown;                     ///< as typed; in a folder, the folder as typed and then the name
    std::string path;                      ///< absolute
    std::optional<std::string> rootFolder; ///< the folder argument in which it was found; absolute
    std::uint64_t bytes = 0;               ///< its length; 0 if the system does not say it
};

/// How folders are searched.
struct ConvertSearch {
    bool recursive = false;  ///< sub-folders too, except those named like a stored set, at any depth
    bool allFolders = false; ///< every sub-folder with any name
    ResizeSets storedSets;
    std::vector<std::string> included; ///< globs of which a file in a folder must match one; none for all
    std::vector<std::string> excluded; ///< globs of which it must match none
    /// Whether a file in a folder is a result and therefore not a source; may be empty.
    std::function<bool(const std::string&)> isResult;
    bool replaces = false; ///< whether originals are replaced; then a link to a file that is found is not one
    std::string namedFolder; ///< where results of this run go below the folder of each file; "" if nowhere
    std::string outFolder;   ///< the folder for the results of this run, absolute; "" if there is none
};

/// Gets what a search finds, in the order in which it finds it.
class InputReceiver {
public:
    virtual ~InputReceiver() = default;
    virtual void picture(ConvertInput input) = 0;
    /// A file or folder that cannot be read, a folder that is left out, or an argument that is a folder
    /// without pictures.
    virtual void finding(ConvertResult finding) = 0;
    /// A file in a folder that is neither a picture nor hidden.
    virtual void otherFile() = 0;
};

/// Whether a glob matches a path below the given folder, or its last part if the glob has no slash. "*" and
/// "?" match slashes as well.
bool globMatches(const std::string& glob, const std::string& path);

/// Whether a search that continues while results are made may reach folders that receive some of them. A
/// single folder is safe, since its names are read at once.
bool mayFindOwnResults(const std::vector<std::string>& arguments, const ConvertSearch& search);

/// Finds every file argument, even if it is not a picture, and each file once. Searches every folder argument
/// and finds its pictures, recognised by content, sorted by name. Ignores hidden files and does not follow
/// links to folders. Ends early after a stop signal. Of a folder, it holds no more than the names in memory.
void findInputs(const std::vector<std::string>& arguments, const ConvertSearch& search,
                InputReceiver& receiver);

} // namespace kestrine
