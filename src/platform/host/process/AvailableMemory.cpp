#include "platform/host/process/AvailableMemory.h"

#include "platform/host/files/FileDescriptor.h"

#include <algorithm>
#include <charconv>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>

namespace kestrine {

namespace {

constexpr std::uint64_t unknown = std::uint64_t{1} << 30;

/// The beginning of a system file, whose size the system does not report; empty if it cannot be read.
std::string systemFile(const std::string& path) {
    constexpr std::size_t limit = 1 << 14;
    std::string text(limit, '\0');
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const ssize_t count = file.isOpen() ? ::read(file.number(), text.data(), text.size()) : 0;
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

/// The number at the beginning of `text`, after spaces.
std::optional<std::uint64_t> leadingNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::uint64_t number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    return parsed.ec == std::errc() ? std::optional(number) : std::nullopt;
}

/// The rest of the line that begins with `key`.
std::optional<std::string_view> valueOf(std::string_view text, std::string_view key) {
    for (std::size_t line = 0; line < text.size(); line = text.find('\n', line) + 1) {
        if (text.substr(line).starts_with(key))
            return text.substr(line + key.size(), text.find('\n', line) - line - key.size());
        if (text.find('\n', line) == std::string_view::npos)
            break;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> numberOf(std::string_view text, std::string_view key) {
    const std::optional<std::string_view> value = valueOf(text, key);
    return value ? leadingNumber(*value) : std::nullopt;
}

std::uint64_t difference(std::uint64_t limit, std::uint64_t used) { return limit - std::min(limit, used); }

class Smallest {
public:
    void add(std::optional<std::uint64_t> bytes) {
        if (bytes)
            smallest_ = std::min(smallest_.value_or(*bytes), *bytes);
    }
    std::uint64_t orElse(std::uint64_t bytes) const { return smallest_.value_or(bytes); }

private:
    std::optional<std::uint64_t> smallest_;
};

std::optional<std::uint64_t> leftInSystem(const std::string& root) {
    constexpr std::uint64_t kibibyte = 1024;
    const std::optional<std::uint64_t> available =
        numberOf(systemFile(root + "/proc/meminfo"), "MemAvailable:");
    return available ? std::optional(*available * kibibyte) : std::nullopt;
}

/// Pages of files that were not used lately count as free, since the system drops them when memory is needed.
std::optional<std::uint64_t> leftInGroup(const std::string& folder) {
    const std::optional<std::uint64_t> limit = leadingNumber(systemFile(folder + "/memory.max"));
    const std::optional<std::uint64_t> used = leadingNumber(systemFile(folder + "/memory.current"));
    if (!limit || !used)
        return std::nullopt;
    const std::uint64_t droppable =
        numberOf(systemFile(folder + "/memory.stat"), "inactive_file ").value_or(0);
    return difference(*limit, difference(*used, droppable));
}

/// Adds to `smallest` the memory that is left in each control group of this process, from the innermost to
/// the outermost.
void addLeftInGroups(const std::string& root, Smallest& smallest) {
    const std::string groups = systemFile(root + "/proc/self/cgroup");
    std::string path(valueOf(groups, "0::").value_or(""));
    while (!path.empty()) {
        smallest.add(leftInGroup(root + "/sys/fs/cgroup" + path));
        path.resize(path.size() == 1 ? 0 : std::max<std::size_t>(path.rfind('/'), 1));
    }
}

std::optional<std::uint64_t> leftInAddressSpace(const std::string& root) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return std::nullopt;
    const std::uint64_t pages = leadingNumber(systemFile(root + "/proc/self/statm")).value_or(0);
    return difference(limit.rlim_cur, pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)));
}

} // namespace

std::uint64_t installedMemory() {
    struct sysinfo information {};
    return ::sysinfo(&information) == 0 ? std::uint64_t{information.totalram} * information.mem_unit
                                        : unknown;
}

std::uint64_t availableMemory(const std::string& root) {
    Smallest smallest;
    smallest.add(leftInSystem(root));
    addLeftInGroups(root, smallest);
    smallest.add(leftInAddressSpace(root));
    return smallest.orElse(unknown);
}

} // namespace kestrine
