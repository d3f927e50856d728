#include "platform/carbon/PathBytes.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/text/NSStringConversion.h"

namespace kestrine {

std::optional<std::string> pathBytesOf(const OptionalString& path) {
    if (!path)
        return std::nullopt;
    try {
        return fileSystemRepresentation(*path);
    } catch (const NSException&) {
        return std::nullopt;
    }
}

} // namespace kestrine
