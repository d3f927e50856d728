#include "kestrinectl/convert/ConvertEnding.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/StoppedBySignal.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "platform/host/process/StopSignals.h"

#include <iostream>

namespace kestrine {

namespace {

/// How the originals come back; "" if none was replaced.
std::string undoHint(const ConvertEnding& ending) {
    return ending.journal == 0
               ? ""
               : "; 'kestrinectl undo " + std::to_string(ending.journal) + "' brings the originals back";
}

void throwWhenStopped(const ConvertReport& report, const ConvertEnding& ending) {
    throwIfStopped([&] {
        return counted(report.done(), "file") + " done, " + std::to_string(report.count() - report.done())
               + " left" + undoHint(ending);
    });
}

/// What failed; "" if nothing did.
std::string failuresOf(const ConvertReport& report, const ConvertEnding& ending) {
    const std::string failures = failuresLine(report.totals());
    const bool isEmpty = report.totals().finished() == 0 && !ending.allowsEmpty;
    return failures.empty() && isEmpty ? "nothing to convert" : failures;
}

} // namespace

nlohmann::ordered_json totalsOf(const ConvertReport& report, const ConvertEnding& ending) {
    const int signal = StopSignalsNoted::noted();
    const int status = signal != 0 ? 128 + signal : failuresOf(report, ending).empty() ? 0 : 1;
    return toJSON(report.totals(),
                  {report.elapsed(), report.count() - report.done(), signal, status, ending.journal});
}

void finish(const ConvertReport& report, const ConvertEnding& ending) {
    const ConvertTotals& totals = report.totals();
    const ReportStyle style = report.style();
    const bool isAlone = totals.finished() < 2;
    const std::string line = totalsLine(totals, report.elapsed()) + undoHint(ending);
    std::string failures = failuresOf(report, ending);
    if (totals.finished() > 0 && !failures.empty() && !isAlone && style.detail != ConvertDetail::none
        && !style.isJSON)
        failures += "; " + line;
    if (style.isJSON)
        std::cout << totalsOf(report, ending).dump() << "\n";
    throwWhenStopped(report, ending);
    if (!failures.empty())
        throw CommandError(failures);
    if (!style.isJSON && style.detail != ConvertDetail::none
        && (!isAlone || style.detail == ConvertDetail::all) && totals.finished() > 0)
        printError(line);
}

} // namespace kestrine
