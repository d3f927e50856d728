// Notification: a message on the desktop.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

/// Shows a notification with the program notify-send. Does nothing if the system lacks it or has no desktop.
void showNotification(const std::string& summary, const std::vector<std::string>& lines);

/// The arguments of notify-send. It takes backslashes in the body as escapes, and desktops take the body as
/// XML; both are written so that the lines are shown as they are. Bytes that are not UTF-8 become escapes.
std::vector<std::string> notificationArguments(const std::string& summary,
                                               const std::vector<std::string>& lines);

} // namespace kestrine
