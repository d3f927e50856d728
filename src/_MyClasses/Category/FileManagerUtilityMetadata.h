// Finder comments, labels and Finder information of files, and the Finder asked by Apple Events.
#pragma once

#include "platform/foundation/NSString.h"

namespace kestrine {

/// `commentForFile`: the Finder comment of the item at `path`; nil, or before 10.5 an empty text, when there
/// is none.
OptionalString commentForFile(const OptionalString& path);

/// `setCommentForFile`: a nil comment does nothing; every failure is quiet.
void setCommentForFile(const OptionalString& comment, const OptionalString& path);

} // namespace kestrine
