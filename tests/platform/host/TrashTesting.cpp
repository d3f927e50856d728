#include "tests/platform/host/TrashTesting.h"

#include <regex>

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
    static const std::regex form(
        R"(\[Trash Info\]\nPath=([!-~]+)\nDeletionDate=\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\n)");
    const std::string text = readFile(item.infoPath);
    std::smatch parts;
    if (!std::regex_match(text, parts, form))
        return "";
    const std::string encoded = parts[1];
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
