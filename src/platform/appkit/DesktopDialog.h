// DesktopDialog: asks the person at the desktop for a file or folder, through the first means the desktop
// has. A means that cannot ask gives way to the next; a person's cancel is an answer.
#pragma once

#include "platform/host/Result.h"

#include <optional>
#include <string>

namespace kestrine {

struct DialogQuestion {
    std::string title; ///< valid UTF-8 without zero bytes
    bool forFolder;    ///< whether folders are offered, else files
    bool several;      ///< whether more than one may be picked, where the dialogue allows that
};

/// The absolute path that was chosen (the first of several), as the file system's bytes; nothing when the
/// person cancelled.
using DialogAnswer = std::optional<std::string>;

/// Waits for the person. Fails when nobody could be asked: unsupported where no display is known.
Result<DialogAnswer> askAtDesktop(const DialogQuestion& question);

} // namespace kestrine
