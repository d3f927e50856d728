#include "tests/platform/host/trash/TrashTesting.h"

#include <regex.h>

namespace kestrine::testing {

std::vector<std::string> namesInFolder(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code absent;
    for (const auto& entry : std::filesystem::directory_iterator(folder, absent))
        names.push_back(entry.path().filename().string());
    return names;
}

::testing::AssertionResult isEmptyTrash(const std::string& trash) {
    for (const char* part : {"/files", "/info"})
        for (const std::string& name : namesInFolder(trash + part))
            return ::testing::AssertionFailure() << "there is " << name << " in " << trash << part;
    return ::testing::AssertionSuccess();
}

std::string recordedPath(const TrashedItem& item) {
    regex_t form;
    const char* const lines = "^\\[Trash Info\\]\nPath=([!-~]+)\nDeletionDate="
                              "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\n$";
    if (::regcomp(&form, lines, REG_EXTENDED) != 0)
        return "";
    const std::string text = readFile(item.infoPath);
    regmatch_t parts[2];
    const bool isRecord = ::regexec(&form, text.c_str(), 2, parts, 0) == 0;
    ::regfree(&form);
    if (!isRecord)
        return "";
    const std::string encoded(text.begin() + parts[1].rm_so, text.begin() + parts[1].rm_eo);
    std::string path;
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        const bool isByte = encoded[i] == '%';
        path += isByte ? static_cast<char>(std::stoi(encoded.substr(i + 1, 2), nullptr, 16)) : encoded[i];
        i += isByte ? 2 : 0;
    }
    return path;
}

std::string TrashTest::makeFolderOpenToAll(const std::string& name) const {
    const std::string path = folder_ / name;
    std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
    std::filesystem::create_directory(path);
    std::filesystem::permissions(path, std::filesystem::perms::all);
    return path;
}

} // namespace kestrine::testing
