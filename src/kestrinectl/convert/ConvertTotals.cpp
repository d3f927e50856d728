#include "kestrinectl/convert/ConvertTotals.h"

#include "kestrinectl/text/ShownNumbers.h"

namespace kestrine {

namespace {

/// "2 damaged, 1 not found"
std::string kindsOf(const std::map<std::string_view, std::size_t>& failures) {
    std::string kinds;
    for (const auto& [kind, count] : failures)
        kinds += (kinds.empty() ? "" : ", ") + std::to_string(count) + " " + std::string(kind);
    return kinds;
}

} // namespace

void ConvertTotals::add(const ConvertResult& result) {
    if (result.isFolder && result.status == ConvertStatus::failed) {
        ++folderFailures;
        return;
    }
    ++files[static_cast<std::size_t>(result.status)];
    if (!result.complaints.empty())
        ++failures[result.complaints.front().kind];
    notUpright += result.isNotUpright ? 1 : 0;
    bytesRead += result.sourceBytes;
    if (result.status == ConvertStatus::skipped)
        return; // its outputs, if any, were there
    outputs += result.outputs.size();
    bytesBefore += result.outputs.empty() ? 0 : result.sourceBytes;
    for (const ConvertOutput& output : result.outputs)
        bytesAfter += output.bytes;
}

std::size_t ConvertTotals::finished() const {
    return count(ConvertStatus::done) + count(ConvertStatus::skipped) + count(ConvertStatus::failed)
           + count(ConvertStatus::would);
}

std::string totalsLine(const ConvertTotals& totals, std::chrono::milliseconds duration) {
    const bool isDry = totals.count(ConvertStatus::would) > 0;
    std::string line = isDry ? counted(totals.count(ConvertStatus::would), "file") + " would be converted"
                             : counted(totals.count(ConvertStatus::done), "file") + " converted";
    if (const std::size_t skipped = totals.count(ConvertStatus::skipped); skipped > 0)
        line += ", " + std::to_string(skipped) + " skipped";
    if (totals.outputs > 0 && !isDry)
        line += ", " + shownBytes(totals.bytesBefore) + " -> " + shownBytes(totals.bytesAfter);
    return line + " in " + shownDuration(duration);
}

std::string failuresLine(const ConvertTotals& totals) {
    std::string line;
    if (const std::size_t failed = totals.count(ConvertStatus::failed); failed > 0)
        line = std::to_string(failed) + " of " + counted(totals.finished(), "file")
               + " could not be converted as requested (" + kindsOf(totals.failures) + ")";
    if (totals.folderFailures > 0)
        line += (line.empty() ? "" : ", ") + counted(totals.folderFailures, "folder") + " could not be read";
    return line;
}

} // namespace kestrine
