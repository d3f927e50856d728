#include "platform/host/files/MountPoints.h"

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <sstream>
#include <sys/stat.h>

namespace kestrine {

namespace {

/// Identifies a mount. Kernels before 5.8 have no mount numbers; there the device number is used.
struct MountIdentity {
    std::uint32_t deviceMajor, deviceMinor;
    std::uint64_t mount;
    bool operator==(const MountIdentity&) const = default;
};

std::optional<MountIdentity> mountOf(int folder, const char* name) {
    struct statx status {};
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_EMPTY_PATH;
    if (::statx(folder, name, flags, STATX_TYPE | STATX_MNT_ID, &status) != 0)
        return std::nullopt;
    // The mount number is preferred: on overlay file systems a file may have another device than its folder.
    if ((status.stx_mask & STATX_MNT_ID) != 0)
        return MountIdentity{0, 0, status.stx_mnt_id};
    return MountIdentity{status.stx_dev_major, status.stx_dev_minor, 0};
}

/// The mount table writes space, tab, newline and backslash as a backslash and three octal digits.
std::string withoutOctalEscapes(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size()) {
            plain +=
                static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

} // namespace

Result<std::string> topFolderOf(const std::string& folder) {
    std::string top = folder;
    const std::optional<MountIdentity> mount = mountOf(AT_FDCWD, folder.c_str());
    for (std::optional<MountIdentity> above = mount; top != "/"; top = folderOf(top)) {
        above = mountOf(AT_FDCWD, folderOf(top).c_str());
        if (!mount || !above)
            return Failure{Reason::inputOutput, "the system does not report where " + folder + " is mounted"};
        if (above != mount)
            break;
    }
    return top;
}

bool isMountPoint(const FolderEntry& entry) {
    const std::optional<MountIdentity> mount = mountOf(entry.folder, entry.name.c_str());
    return !mount || mount != mountOf(entry.folder, "");
}

Result<std::vector<MountPoint>> mountPoints() {
    std::ifstream table("/proc/self/mountinfo");
    if (!table)
        return systemFailure("cannot read the mount table");
    std::vector<MountPoint> points;
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string number, parent, device, root, mountedOn;
        fields >> number >> parent >> device >> root >> mountedOn;
        points.push_back({withoutOctalEscapes(mountedOn), root == "/"});
    }
    return points;
}

bool hasMountPointBelow(const std::string& folder) {
    const std::string prefix = joinedPath(folder, "");
    Result<std::vector<MountPoint>> points = mountPoints();
    return points && std::any_of(points->begin(), points->end(), [&](const MountPoint& point) {
               return point.path.starts_with(prefix);
           });
}

} // namespace kestrine
