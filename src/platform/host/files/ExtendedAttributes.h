// Extended attributes: named byte strings that a file system stores with a file.
// Names include the namespace ("user.xdg.comment"). Symbolic links are followed.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <string>
#include <vector>

namespace kestrine {

// Every function fails with unsupported if the file system does not support such attributes, with notFound if
// the file or the attribute does not exist, with notPermitted if the system denies access (pipes and devices
// cannot have "user." attributes), and with malformed for a path or name that is empty or has a zero byte.

/// The value; it may be empty.
Result<Bytes> getExtendedAttribute(const std::string& path, const std::string& name);

/// Creates or replaces the attribute. Fails with noSpace or tooLarge if the value is too long: some file
/// systems allow only about 4 KB.
Result<void> setExtendedAttribute(const std::string& path, const std::string& name, ByteView value);

/// The names, in no particular order.
Result<std::vector<std::string>> listExtendedAttributes(const std::string& path);

Result<void> removeExtendedAttribute(const std::string& path, const std::string& name);

/// Whether a copy may lose its attributes on a file system that does not support them.
enum class AttributeLoss : bool { refused, accepted };

/// Copies all attributes of the open file or folder `from` to `to`. Fails if a "user." attribute cannot be
/// copied, except that AttributeLoss::accepted allows a target that does not support attributes. System
/// attributes (access lists, security labels) are copied if possible. If the file system of `from` does not
/// support attributes, there is nothing to copy.
Result<void> copyExtendedAttributes(int from, int to, AttributeLoss loss = AttributeLoss::refused);

} // namespace kestrine
