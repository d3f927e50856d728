#include "kestrinectl/ConvertInputs.h"

#include "kestrinectl/CommandError.h"
#include "platform/imageio/ImageCodec.h"

#include <algorithm>
#include <filesystem>

namespace kestrine {

namespace {

namespace fs = std::filesystem;

bool isHidden(const fs::path& path) { return path.filename().native().starts_with('.'); }

bool isPicture(const fs::path& path) {
    const auto reader = readerOfPath(path.native());
    return reader && codecFor(**reader) != nullptr;
}

/// Below the current folder where it is relative. Steps that lead nowhere (".") are left out; ".." stays,
/// since it need not lead back where a link was followed.
fs::path absolutePath(const fs::path& path) {
    fs::path result;
    for (const fs::path& step : fs::absolute(path))
        if (step != ".")
            result /= step;
    return result;
}

/// The pictures of one folder that was typed.
class FolderSearch {
public:
    FolderSearch(const fs::path& typed, bool recursive, const ResizeSets& sets)
        : typed_(typed), root_(absolutePath(typed)), recursive_(recursive) {
        const NSString root = NSString::fromUTF8(root_.native());
        for (const auto& set : sets)
            if (const OptionalString folder = set->resizeFolderForPath(root, root))
                outputFolders_.emplace_back(folder->utf8());
    }

    std::vector<ConvertInput> pictures() {
        search(typed_);
        return std::move(found_);
    }

private:
    void search(const fs::path& folder) {
        std::vector<fs::path> entries;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder))
            entries.push_back(entry.path());
        std::ranges::sort(entries);
        for (const fs::path& entry : entries)
            if (!isHidden(entry))
                visit(entry);
    }

    void visit(const fs::path& entry) {
        const fs::path absolute = absolutePath(entry);
        const fs::file_status status = fs::symlink_status(entry);
        if (fs::is_directory(status)) {
            if (recursive_ && std::ranges::find(outputFolders_, absolute) == outputFolders_.end())
                search(entry);
        } else if (fs::is_regular_file(fs::status(entry)) && isPicture(entry)) {
            found_.push_back({entry.native(), absolute.native(), root_.native()});
        }
    }

    const fs::path typed_;
    const fs::path root_;
    const bool recursive_;
    std::vector<fs::path> outputFolders_;
    std::vector<ConvertInput> found_;
};

/// Without the separators at its end, which would make a name behind it look odd; "/" stays.
fs::path withoutTrailingSeparator(const fs::path& path) {
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

} // namespace

std::vector<ConvertInput> convertInputs(const std::vector<std::string>& arguments, bool recursive,
                                        const ResizeSets& sets) {
    std::vector<ConvertInput> inputs;
    for (const std::string& argument : arguments) {
        std::error_code ignored;
        if (!fs::is_directory(argument, ignored)) {
            inputs.push_back({argument, absolutePath(argument).native(), std::nullopt});
            continue;
        }
        try {
            const fs::path folder = withoutTrailingSeparator(argument);
            std::ranges::move(FolderSearch(folder, recursive, sets).pictures(), std::back_inserter(inputs));
        } catch (const fs::filesystem_error& error) {
            throw CommandError("cannot read the folder " + error.path1().native() + ": "
                               + error.code().message());
        }
    }
    return inputs;
}

} // namespace kestrine
