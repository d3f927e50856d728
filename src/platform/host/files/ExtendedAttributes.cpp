#include "platform/host/files/ExtendedAttributes.h"

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>
#include <cerrno>
#include <linux/limits.h>
#include <sys/xattr.h>

namespace kestrine {

namespace {

Failure attributeFailure(const std::string& what) {
    const int error = errno;
    Failure failure = systemFailure(what, error);
    if (error == ENODATA)
        failure.reason = Reason::notFound;
    if (error == E2BIG || error == ERANGE)
        failure.reason = Reason::tooLarge;
    return failure;
}

/// The system's list: names that each end in a zero byte.
std::vector<std::string> namesInList(ByteView list) {
    std::vector<std::string> names;
    for (auto rest = list.begin(); rest != list.end();) {
        const auto end = std::find(rest, list.end(), 0);
        names.emplace_back(rest, end);
        rest = end == list.end() ? end : end + 1;
    }
    return names;
}

Result<void> checkNames(const std::string& path, const std::string& name) {
    TRY(checkPath(path));
    return checkPath(name);
}

/// Calls that fill a buffer, which is as large as the kernel's bound on the answer.
template <class Call>
Result<Bytes> filledBy(std::size_t largest, const std::string& what, const Call& call) {
    Bytes bytes(largest);
    const ssize_t length = call(bytes.data(), bytes.size());
    if (length < 0)
        return attributeFailure(what);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

Result<void> copyOne(int from, int to, const std::string& name) {
    Bytes value =
        TRY(filledBy(XATTR_SIZE_MAX, "cannot read the attribute " + name, [&](void* into, std::size_t room) {
            return ::fgetxattr(from, name.c_str(), into, room);
        }));
    if (::fsetxattr(to, name.c_str(), value.data(), value.size(), 0) != 0)
        return attributeFailure("cannot write the attribute " + name);
    return {};
}

} // namespace

Result<Bytes> getExtendedAttribute(const std::string& path, const std::string& name) {
    TRY(checkNames(path, name));
    return filledBy(XATTR_SIZE_MAX, "cannot read the attribute " + name, [&](void* into, std::size_t room) {
        return ::getxattr(path.c_str(), name.c_str(), into, room);
    });
}

Result<void> setExtendedAttribute(const std::string& path, const std::string& name, ByteView value) {
    TRY(checkNames(path, name));
    if (::setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) != 0)
        return attributeFailure("cannot write the attribute " + name);
    return {};
}

Result<std::vector<std::string>> listExtendedAttributes(const std::string& path) {
    TRY(checkPath(path));
    Bytes list =
        TRY(filledBy(XATTR_LIST_MAX, "cannot list the attributes", [&](void* into, std::size_t room) {
            return ::listxattr(path.c_str(), static_cast<char*>(into), room);
        }));
    return namesInList(list);
}

Result<void> removeExtendedAttribute(const std::string& path, const std::string& name) {
    TRY(checkNames(path, name));
    if (::removexattr(path.c_str(), name.c_str()) != 0)
        return attributeFailure("cannot remove the attribute " + name);
    return {};
}

Result<void> copyExtendedAttributes(int from, int to, AttributeLoss loss) {
    Result<Bytes> list =
        filledBy(XATTR_LIST_MAX, "cannot list the attributes", [&](void* into, std::size_t room) {
            return ::flistxattr(from, static_cast<char*>(into), room);
        });
    if (!list && list.failure().reason == Reason::unsupported)
        return {};
    if (!list)
        return list.failure();
    for (const std::string& name : namesInList(*list)) {
        Result<void> copied = copyOne(from, to, name);
        if (copied || !name.starts_with("user."))
            continue;
        if (loss == AttributeLoss::refused || copied.failure().reason != Reason::unsupported)
            return copied;
    }
    return {};
}

} // namespace kestrine
