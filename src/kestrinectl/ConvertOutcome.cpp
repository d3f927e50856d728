#include "kestrinectl/ConvertOutcome.h"

#include "kestrinectl/ConvertContents.h"
#include "kestrinectl/ShownPath.h"

#include <algorithm>

namespace kestrine {

namespace {

std::string complaintOf(const JobOutcome& outcome, const std::string& path) {
    if (outcome.isWritten)
        return "the original stays, it could not go to the trash (" + outcome.trashFailure->text
               + "); the result is " + shownPath(outcome.path.utf8());
    std::string complaint = withoutPath(outcome.failure->text, path);
    if (outcome.refusal == Refusal::holdsMore)
        complaint = reasonNotToReplace(outcome.contents);
    if (outcome.refusal == Refusal::damaged)
        complaint = "the picture is damaged (" + complaint
                    + "), nothing was written; --accept-damaged converts it anyway";
    if (!outcome.trashedPath.empty())
        complaint +=
            "; the original is in the trash: restore it there, or move it back from " + outcome.trashedPath;
    return complaint;
}

/// Sets often fail for the same reason, so one line reports it.
void addOnce(std::vector<std::string>& lines, const std::string& line) {
    if (std::ranges::find(lines, line) == lines.end())
        lines.push_back(line);
}

} // namespace

void addOutcome(ConvertResult& result, const ConvertInput& input, const JobOutcome& outcome) {
    result.isLeftLying = result.isLeftLying || (outcome.hasResult() && outcome.isLeftLying);
    const std::string& shown = input.shown;
    if (outcome.isWritten)
        result.lines.push_back(shown + " -> " + shownPath(outcome.path.utf8()));
    else if (outcome.fitsAlready && outcome.data == nullptr)
        result.lines.push_back(shown + " stays, it fits already");
    if (const auto omission = omissionIn(outcome.contents); omission && outcome.hasResult())
        addOnce(result.warnings, shown + ": " + *omission);
    if (outcome.hasResult() && outcome.damage)
        result.warnings.push_back(shown + ": the picture is damaged (" + outcome.damage->text
                                  + "); the result shows what could be read");
    if (!outcome.hasResult() || outcome.trashFailure)
        addOnce(result.complaints, shown + ": " + complaintOf(outcome, input.path));
}

} // namespace kestrine
