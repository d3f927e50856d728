#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kestrine::testing {

TemporaryFolder::TemporaryFolder(const std::filesystem::path& parent) {
    const std::filesystem::path base = parent.empty() ? std::filesystem::temp_directory_path() : parent;
    std::string pattern = (base / "kestrine-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot create a temporary folder in " + base.string());
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::write(std::string_view name, std::string_view content) const {
    const std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file.string();
}

std::string TemporaryFolder::write(std::string_view name, ByteView content) const {
    return write(name, std::string_view(reinterpret_cast<const char*>(content.data()), content.size()));
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Bytes readFileBytes(const std::filesystem::path& path) { return bytesOf(readFile(path)); }

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

} // namespace kestrine::testing
