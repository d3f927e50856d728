#include "kestrinectl/desktop/Notification.h"

#include "kestrinectl/desktop/Quoting.h"
#include "kestrinectl/text/ShownText.h"
#include "platform/host/process/CapturedRun.h"

namespace kestrine {

namespace {

constexpr std::size_t maxNotifierOutput = 4096;

std::string withDoubledBackslashes(const std::string& text) {
    std::string doubled;
    for (const char c : text)
        doubled += c == '\\' ? "\\\\" : std::string(1, c);
    return doubled;
}

} // namespace

std::vector<std::string> notificationArguments(const std::string& summary,
                                               const std::vector<std::string>& lines) {
    std::string body;
    for (const std::string& line : lines)
        body += (body.empty() ? "" : "\n") + withDoubledBackslashes(xmlText(shownText(line, true)));
    return {"--app-name=kestrine", "--icon=dialog-error", "--", shownText(summary, true), body};
}

void showNotification(const std::string& summary, const std::vector<std::string>& lines) {
    (void)runCapturingOutput("notify-send", notificationArguments(summary, lines), maxNotifierOutput);
}

} // namespace kestrine
