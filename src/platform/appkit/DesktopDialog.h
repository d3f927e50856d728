// DesktopDialog: asks the person at the desktop for a file or folder, by the first of several means that
// works: the desktop's portal, zenity, kdialog. A cancel by the person is an answer, too.
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

/// The absolute path of the existing file or folder that was chosen (the first of several), as bytes of the
/// file system; nothing when the person cancelled.
using DialogAnswer = std::optional<std::string>;

/// Blocks until the person has answered; the dialogue is closed when this process ends. Fails when no means
/// could ask or gave a usable answer: unsupported where no display is known.
Result<DialogAnswer> askAtDesktop(const DialogQuestion& question);

} // namespace kestrine
