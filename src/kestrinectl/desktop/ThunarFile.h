// ThunarFile: where the actions are in the file of Thunar's custom actions. Nothing is written here, so that
// everything else in the file stays byte for byte.
#pragma once

#include "platform/host/Result.h"

#include <map>
#include <string>
#include <vector>

namespace kestrine {

/// An element <action> and its place, from its first to after its last byte.
struct ThunarAction {
    std::size_t begin = 0, end = 0;
    /// The character data of the elements in it, by name. Elements without data are left out, unless they
    /// are marks such as <image-files/>.
    std::map<std::string, std::string> fields;

    std::string field(const std::string& name) const;
};

struct ThunarFile {
    std::vector<ThunarAction> actions;
    std::size_t endTag = 0;      ///< the place of </actions>; further actions go before it
    bool isEmptyElement = false; ///< whether it is <actions/>, whose "/>" is then at `endTag`
};

/// Reads the content of a file. Fails with "malformed" for anything but well-formed XML in UTF-8, without a
/// document type, whose outermost element is <actions>, and with "unsupported" if libexpat is missing.
Result<ThunarFile> parseThunarFile(const std::string& content);

} // namespace kestrine
