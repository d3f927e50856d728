#include "commandline/RunLoop.h"

#include "models/ResizeUnit.h"
#include "platform/foundation/NSCollections.h"
#include "platform/foundation/text/FormatText.h"

#include <exception>

namespace kestrine {

namespace {

void run(const OptionalString& path, const ResizeSets& sets) {
    const auto job = std::make_shared<ResizeUnit>();
    job->setValueForKey(path ? path->object() : nullptr, u"filepath");
    job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>(sets.begin(), sets.end())),
                        u"resizeSets");
    job->setValueForKey(path ? path->deletingLastPathComponent().object() : nullptr, u"saveFolderPath");
    job->resize();
}

/// The only place that catches the exceptions of a job, including lack of memory: the next file follows.
void runJob(const NSString& argument, const OptionalString& PWD, const ResizeSets& sets) {
    try {
        run(pathForArgument(argument, PWD), sets);
    } catch (const std::exception&) {
        return; // no output for this file
    }
}

void addExpanded(const std::string& format, CollectedOutput& output) {
    expandFormatText(format, [&output](std::string_view piece) { output.add(piece); });
}

} // namespace

void listSets(const ResizeSets& sets, StandardOutput& output) {
    std::vector<std::string> names;
    for (const auto& set : sets)
        names.push_back(set->name().value_or(u"").utf8());
    CollectedOutput lines(output);
    for (const std::string& name : names) {
        addExpanded(name, lines);
        lines.add("\n");
    }
}

OptionalString pathForArgument(const NSString& argument, const OptionalString& PWD) {
    if (argument.contains(u"/Volumes") || argument.contains(u"~/"))
        return argument;
    return PWD ? OptionalString(PWD->appendingPathComponent(argument)) : std::nullopt;
}

void convertFiles(const PresetSelection& selection, const OptionalString& PWD, StandardOutput& output) {
    if (selection.sets.empty())
        return;
    std::vector<std::string> shown;
    for (const NSString& argument : selection.files)
        shown.push_back(argument.utf8());
    CollectedOutput line(output);
    for (std::size_t i = 0; i < selection.files.size(); ++i) {
        addExpanded(shown[i], line);
        line.add(" converting...");
        line.flush(); // before the job begins, so that the user sees which file is being converted
        runJob(selection.files[i], PWD, selection.sets);
        line.add(" and done!!\n");
        line.flush();
    }
}

} // namespace kestrine
