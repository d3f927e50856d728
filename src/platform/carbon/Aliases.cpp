#include "platform/carbon/Aliases.h"

#include "platform/carbon/CatalogNode.h"
#include "platform/carbon/ItemIdentity.h"
#include "platform/carbon/StatusCodes.h"
#include "platform/host/BigEndian.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>
#include <climits>

namespace kestrine {
namespace {

// The layout: 4 bytes for the owning application (0), 2 bytes total size, 2 bytes version, 8 bytes device, 8
// bytes inode, the path. Numbers are big-endian.
constexpr std::uint64_t aliasVersion = 1;
constexpr std::size_t headerSize = 24;
/// identityOf() fails for longer paths, so every size fits in its two bytes.
static_assert(headerSize + PATH_MAX <= 0xFFFF);

Bytes aliasBytes(const ItemIdentity& identity, const std::string& path) {
    Bytes bytes;
    appendBigEndian(bytes, 0, 4);
    appendBigEndian(bytes, headerSize + path.size(), 2);
    appendBigEndian(bytes, aliasVersion, 2);
    appendBigEndian(bytes, identity.device, 8);
    appendBigEndian(bytes, identity.number, 8);
    bytes.insert(bytes.end(), path.begin(), path.end());
    return bytes;
}

struct Alias {
    ItemIdentity identity;
    std::string path;
};

Result<Alias> parsedAlias(ByteView bytes) {
    const bool isAlias = bytes.size() > headerSize && bigEndian(bytes.subspan(4, 2)) == bytes.size()
                         && bigEndian(bytes.subspan(6, 2)) == aliasVersion;
    if (!isAlias)
        return Failure{Reason::malformed, "not an alias"};
    const ByteView path = bytes.subspan(headerSize);
    Alias alias{{bigEndian(bytes.subspan(8, 8)), bigEndian(bytes.subspan(16, 8))},
                {path.begin(), path.end()}};
    if (alias.path[0] != '/' || !checkPath(alias.path))
        return Failure{Reason::malformed, "the alias contains no absolute path"};
    return alias;
}

} // namespace

OSErr FSNewAlias(const FSRef*, const FSRef* target, AliasHandle* alias) {
    if (alias != nullptr)
        *alias = nullptr;
    if (target == nullptr || alias == nullptr)
        return paramErr;
    if (target->node == nullptr || target->node->isTopLevel())
        return errFSBadFSRef;
    const std::string& path = target->node->path();
    const Result<ItemIdentity> identity = identityOf(path);
    if (!identity)
        return statusCodeFor(identity.failure());
    const Bytes bytes = aliasBytes(*identity, path);
    *alias = NewHandle(static_cast<Size>(bytes.size()));
    if (*alias == nullptr)
        return MemError();
    std::ranges::copy(bytes, **alias);
    return noErr;
}

Result<std::string> pathOfAlias(ByteView bytes) {
    Alias alias = TRY(parsedAlias(bytes));
    if (isTaken(alias.path))
        return std::move(alias.path);
    const std::string folder = folderOf(alias.path);
    const std::string name = TRY(nameOfItem(folder, alias.identity));
    return joinedPath(folder, name);
}

} // namespace kestrine
