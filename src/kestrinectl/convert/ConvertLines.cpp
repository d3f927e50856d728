#include "kestrinectl/convert/ConvertLines.h"

#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/ShownPath.h"

namespace kestrine {

namespace {

/// " (1200 x 800 JPEG, 120 kB, 85 ms)"
std::string detailsOf(const ConvertOutput& output, const ConvertResult& result) {
    if (output.format == nullptr || output.width == 0)
        return "";
    return " (" + std::to_string(output.width) + " x " + std::to_string(output.height) + " "
           + std::string(output.format->title) + ", " + shownBytes(result.sourceBytes) + " -> "
           + shownBytes(output.bytes) + ", " + shownDuration(result.duration) + ")";
}

/// "a.jpg: the picture is damaged"
std::string about(const ConvertResult& result, const std::string& text) {
    return result.source.empty() ? text : result.source + ": " + text;
}

} // namespace

void printMessages(const ConvertResult& result, ConvertDetail detail) {
    if (detail != ConvertDetail::none)
        for (const std::string& warning : result.warnings)
            printWarning(about(result, warning));
    for (const ConvertComplaint& complaint : result.complaints)
        printError(result.sentence.empty() ? about(result, complaint.text) : result.sentence);
}

void printResult(const ConvertResult& result, ConvertDetail detail) {
    if (detail != ConvertDetail::none && result.status != ConvertStatus::skipped)
        for (const ConvertOutput& output : result.outputs)
            printLine(result.source + " -> " + shownPath(output.path)
                      + (detail == ConvertDetail::all ? detailsOf(output, result) : ""));
    if (result.status == ConvertStatus::skipped
        && (detail == ConvertDetail::all || (detail == ConvertDetail::lines && !result.isUpToDate)))
        printLine(result.source + " skipped: " + result.reason);
    if (result.status == ConvertStatus::leftOut && detail != ConvertDetail::none)
        printError(result.sentence);
    printMessages(result, detail);
}

} // namespace kestrine
