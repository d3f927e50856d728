// The extension group `myUtility` on NSFileManager: what the program wants of folders and files beyond the
// platform.
#pragma once

#include "platform/foundation/NSFileManager.h"

namespace kestrine::myUtility {

/// `makeFoldersToPath:`: makes every missing folder along `path`, the last component included. Failures are
/// quiet: a file in the way, or a folder that may not be written, leaves the levels below it unmade. The
/// first component of a relative path is never made.
void makeFoldersToPath(NSFileManager& manager, const NSString& path);

} // namespace kestrine::myUtility
