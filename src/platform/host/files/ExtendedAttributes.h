// Extended attributes: named bytes that the file system keeps beside a file.
// Names are full ones ("user.xdg.comment"). Paths follow symbolic links.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <string>
#include <vector>

namespace kestrine {

// Every function fails with unsupported where the file system keeps no such attributes, with notFound when
// the file or the attribute is absent, and with notPermitted for lack of rights (links and devices
// take no "user." attributes at all).

/// The value; it may be empty.
Result<Bytes> getExtendedAttribute(const std::string& path, const std::string& name);

/// Makes or replaces the attribute. noSpace and tooLarge: file systems bound values, some at about 4 KB.
Result<void> setExtendedAttribute(const std::string& path, const std::string& name, ByteView value);

/// The names, in no order; empty when there are none.
Result<std::vector<std::string>> listExtendedAttributes(const std::string& path);

Result<void> removeExtendedAttribute(const std::string& path, const std::string& name);

/// Whether a copy may do without attributes where the file system keeps none.
enum class AttributeLoss : bool { refused, accepted };

/// Gives the open file or folder `to` the attributes of `from`. Fails when a "user." attribute, which is
/// the user's content, cannot be had, unless no such attribute can and that is accepted; those of the system
/// (access lists, security labels) are copied where that is possible. A file system without attributes at
/// `from` has nothing to copy.
Result<void> copyExtendedAttributes(int from, int to, AttributeLoss loss = AttributeLoss::refused);

} // namespace kestrine
