// DesktopDialog: asks the user at the desktop for a file or folder with the first of these that works: the
// desktop's portal, zenity, kdialog. A cancel by the user is also an answer.
#pragma once

#include "platform/host/Result.h"

#include <optional>
#include <string>

namespace kestrine {

struct DialogQuestion {
    std::string title; ///< valid UTF-8 without zero bytes
    bool forFolder;    ///< whether folders are offered, else files
    bool several;      ///< whether more than one may be chosen, where the dialogue allows that
};

/// The absolute path of the existing file or folder that was chosen (the first of several), as bytes of the
/// file system; nullopt when the user cancelled.
using DialogAnswer = std::optional<std::string>;

/// Blocks until the user has answered; the dialogue is closed when this process ends. Fails when no dialogue
/// could be shown or gave a usable answer; with unsupported when no display is known.
Result<DialogAnswer> askAtDesktop(const DialogQuestion& question);

} // namespace kestrine
