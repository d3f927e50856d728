#include "kestrinectl/desktop/Notification.h"

#include "kestrinectl/text/HTMLText.h"
#include "kestrinectl/text/Replacement.h"
#include "kestrinectl/text/ShownText.h"
#include "platform/host/process/CapturedRun.h"

namespace kestrine {

namespace {

constexpr std::size_t maxNotifierOutput = 4096;

constexpr Replacement inBody[] = {{'\\', "\\\\"}};

} // namespace

std::vector<std::string> notificationArguments(const std::string& summary,
                                               const std::vector<std::string>& lines) {
    std::string body;
    for (const std::string& line : lines)
        body += (body.empty() ? "" : "\n") + replaced(htmlText(line), inBody);
    return {"--app-name=kestrine", "--icon=dialog-error", "--", shownText(summary, true), body};
}

void showNotification(const std::string& summary, const std::vector<std::string>& lines) {
    (void)runCapturingOutput("notify-send", notificationArguments(summary, lines), maxNotifierOutput);
}

} // namespace kestrine
