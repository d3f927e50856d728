#include "kestrinectl/convert/OutputFolders.h"

#include "kestrinectl/GivenPaths.h"

#include <algorithm>

namespace kestrine {

namespace fs = std::filesystem;

namespace {

bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

} // namespace

OutputFolders::OutputFolders(const ConvertSearch& search, const std::vector<std::string>& arguments)
    : arguments_(arguments),
      outFolder_(search.outFolder.empty() ? fs::path() : canonicalPath(search.outFolder)) {
    for (const auto& set : search.storedSets)
        endings_.push_back(NSString(u"/").appendingPathComponent(set->name().value_or(u"")).utf8());
    if (!search.namedFolder.empty())
        endings_.push_back("/" + search.namedFolder);
}

bool OutputFolders::contain(const fs::path& folder) const { return hasNameOfOne(folder) || isOut(folder); }

bool OutputFolders::isOut(const fs::path& folder) const {
    return !outFolder_.empty() && canonicalPath(folder) == outFolder_;
}

// There may be a million arguments, most of them files, so the rest is asked only of folders.
bool OutputFolders::containArgument() const {
    const bool mayBeInside = !outFolder_.empty() && isFolder(outFolder_);
    if (endings_.empty() && !mayBeInside)
        return false;
    return std::ranges::any_of(arguments_, [&](const std::string& argument) {
        return isFolder(argument)
               && (hasNameOfOne(withoutTrailingSeparator(argument))
                   || (mayBeInside && isInsideOut(argument)));
    });
}

bool OutputFolders::isNews(const fs::path& folder) {
    if (!known_) {
        known_.emplace();
        for (const std::string& argument : arguments_)
            if (isFolder(argument))
                known_->insert(canonicalPath(argument));
    }
    return known_->insert(canonicalPath(folder)).second;
}

bool OutputFolders::hasNameOfOne(const fs::path& folder) const {
    const std::string path = absolutePath(folder).native();
    return std::ranges::any_of(endings_, [&](const std::string& ending) { return path.ends_with(ending); });
}

bool OutputFolders::isInsideOut(const fs::path& folder) const {
    return std::ranges::mismatch(outFolder_, canonicalPath(folder)).in1 == outFolder_.end();
}

} // namespace kestrine
