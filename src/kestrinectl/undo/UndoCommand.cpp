#include "kestrinectl/undo/UndoCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/StoppedBySignal.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/NumberBetween.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/undo/Undo.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/process/StopSignals.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <set>

namespace kestrine {

namespace {

using Kind = UndoneFile::Kind;

/// The latest run that was not undone.
std::size_t latestRun() {
    const std::vector<std::size_t> numbers = recordedRuns();
    for (auto number = numbers.rbegin(); number != numbers.rend(); ++number)
        if (const auto run = summaryOfRun(*number); run && !run->isUndone && !run->files.empty())
            return *number;
    throw CommandError("nothing to undo; 'kestrinectl history' lists all runs");
}

void report(const ReplacedFile& file, const UndoneFile& undone) {
    switch (undone.kind) {
    case Kind::back:
    case Kind::inPlace:
        return;
    case Kind::beside:
        return printError(file.result + " was changed since and is kept; its original is " + undone.path);
    case Kind::renamed:
        return printError("another file is named " + file.original + " now and is kept; the original is "
                          + undone.path);
    case Kind::emptied:
        return printError(file.original + ": the original is no longer in the trash");
    case Kind::failed:
        return printError(file.original + ": " + undone.reason);
    }
}

struct UndoCount {
    std::size_t back = 0, inPlace = 0, troubles = 0, failures = 0;

    void add(const UndoneFile& undone) {
        back += undone.kind == Kind::back ? 1 : 0;
        inPlace += undone.kind == Kind::inPlace ? 1 : 0;
        troubles += undone.kind != Kind::back && undone.kind != Kind::inPlace ? 1 : 0;
        failures += undone.kind == Kind::failed ? 1 : 0;
    }
};

void undo(std::size_t number) {
    PastRun past(number);
    const RecordedRun& run = past.run();
    const std::string name = "run " + std::to_string(number);
    if (run.isUndone)
        throw CommandError("nothing to undo: " + name + " was undone already");
    const StopSignalsNoted untilTheEnd;
    Undo work(past, Environment::ofProcess());
    UndoCount count;
    for (const ReplacedFile& file : run.files) {
        throwIfStopped([&] {
            (void)work.settle(); // the next undo does the rest
            return std::to_string(count.back) + " of " + counted(run.files.size(), "original")
                   + " back; 'kestrinectl undo " + std::to_string(number) + "' continues";
        });
        const UndoneFile undone = work.takeBack(file);
        report(file, undone);
        count.add(undone);
    }
    const Result<void> settled = work.settle();
    const Result<void> noted = settled && count.failures == 0 ? past.noteUndone() : settled;
    if (!noted)
        throw CommandError(noted.failure().text + "; 'kestrinectl undo " + std::to_string(number)
                           + "' tries again");
    const std::string line =
        name + ": " + counted(count.back, "original") + " back in place"
        + (count.inPlace > 0 ? ", " + std::to_string(count.inPlace) + " there already" : "");
    if (count.troubles > 0)
        throw CommandError(line + ", " + std::to_string(count.troubles) + " not");
    printLine(line);
}

/// "3 files in /home/me/pictures"; of several folders the first by name, whichever file was replaced first.
std::string placeOf(const RecordedRun& run) {
    std::set<std::string> folders;
    for (const ReplacedFile& file : run.files)
        folders.insert(folderOf(file.original));
    const std::string text = counted(run.files.size(), "file");
    if (folders.empty())
        return text;
    return text + " in " + *folders.begin() + (folders.size() > 1 ? " and other folders" : "");
}

void printHistory(bool asJSON) {
    bool isEmpty = true;
    for (const std::size_t number : recordedRuns()) {
        const auto run = summaryOfRun(number);
        if (!run || run->files.empty())
            continue;
        isEmpty = false;
        if (asJSON)
            std::cout << nlohmann::ordered_json{{"run", number},
                                                {"began", run->began},
                                                {"files", run->files.size()},
                                                {"undone", run->isUndone}}
                             .dump()
                      << "\n";
        else
            printLine(std::to_string(number) + "  " + run->began + "  " + placeOf(*run)
                      + (run->isUndone ? ", undone" : ""));
    }
    if (isEmpty && !asJSON)
        printError("no run has replaced files yet");
}

} // namespace

void addUndoCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("undo", "Bring back the originals that a run of 'convert' has replaced");
    auto number = std::make_shared<std::optional<std::size_t>>();
    command
        ->add_option(
            "RUN", *number,
            "The number of the run, as 'kestrinectl history' lists it (default: the latest run that was "
            "not undone)")
        ->check(numberBetween(std::size_t{1}, std::size_t{1'000'000'000}));
    command->callback([number] { undo(number->has_value() ? **number : latestRun()); });
}

void addHistoryCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand("history", "List the runs of 'convert' that replaced files");
    auto asJSON = std::make_shared<bool>(false);
    command->add_flag("--json", *asJSON, "Print one JSON object per run");
    command->callback([asJSON] { printHistory(*asJSON); });
}

} // namespace kestrine
