// Notification: a message on the desktop.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

/// Shows a notification with the program notify-send. Does nothing if the system lacks it or has no desktop.
void showNotification(const std::string& summary, const std::string& body);

/// The arguments of notify-send. It takes backslashes in the body as escapes, and desktops take the body as
/// XML; both are written so that the text is shown as it is. Bytes that are not UTF-8 become escapes.
std::vector<std::string> notificationArguments(const std::string& summary, const std::string& body);

} // namespace kestrine
