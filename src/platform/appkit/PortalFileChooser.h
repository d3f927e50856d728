// PortalFileChooser: asks through the desktop's portal (org.freedesktop.portal.FileChooser), which shows the
// running desktop's own dialogue.
#pragma once

#include "platform/appkit/DesktopDialog.h"

namespace kestrine {

/// Does the same as askAtDesktop(), but only with the portal. Fails when there is no portal, or when it
/// refuses, cannot offer folders, does not reply within 5 seconds, or ends without an answer.
Result<DialogAnswer> askPortal(const DialogQuestion& question);

} // namespace kestrine
