#include "kestrinectl/convert/ConvertSelection.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/convert/FileLists.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/Words.h"

namespace kestrine {

void ConvertSelection::addTo(CLI::App& command) {
    command.add_flag("-r,--recursive", search.recursive,
                     "Search sub-folders too, except those named like a stored set (default: no)");
    command.add_flag("--all-folders", search.allFolders,
                     "Search all sub-folders, also those named like a stored set (default: no)");
    command
        .add_option(
            "--include", search.included,
            "In folders, take only files that match this glob: the path below the given folder, or the "
            "name if the glob has no slash; may be repeated (default: all pictures)")
        ->allow_extra_args(false)
        ->option_text("GLOB");
    command
        .add_option("--exclude", search.excluded,
                    "In folders, leave out files that match this glob; may be repeated (default: none)")
        ->allow_extra_args(false)
        ->option_text("GLOB");
    command
        .add_option(
            "--files-from", list,
            "Convert also the files and folders that this list names, one per line; - for standard input")
        ->check(nonEmpty())
        ->option_text("FILE");
    command.add_flag("-0,--null", listHasZeroBytes,
                     "The names in the list end with a zero byte instead of a newline");
    command.add_flag("--allow-empty", allowsEmpty,
                     "Exit with status 0 when there are no pictures (default: status 1)");
}

namespace {

/// The folder that all names of a template have in common: "small" of "small/{set}/{stem}.{ext}".
std::string folderInTemplate(const std::string& text) {
    const std::string fixed = text.substr(0, text.find('{'));
    const std::size_t slash = fixed.rfind('/');
    return slash == std::string::npos ? "" : fixed.substr(0, slash);
}

} // namespace

void ConvertSelection::complete(const ResizeSets& storedSets, const ConvertOptions& options,
                                const std::string& command) {
    search.storedSets = storedSets;
    if (options.out)
        search.outFolder = absolutePath(typedWord(*options.out)).native();
    if (options.name && !options.out)
        search.namedFolder = folderInTemplate(typedWord(*options.name));
    for (auto* words : {&files, &search.included, &search.excluded})
        for (std::string& word : *words)
            word = typedWord(word);
    if (list)
        for (const std::string& name : namesInList(typedWord(*list), listHasZeroBytes))
            files.push_back(name);
    if (listHasZeroBytes && !list)
        throw CommandError("-0 needs --files-from", 2);
    if (files.empty() && !list)
        throw CommandError("FILE is required; 'kestrinectl help " + command + "' explains its use", 2);
}

} // namespace kestrine
