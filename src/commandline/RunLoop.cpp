#include "commandline/RunLoop.h"

#include "models/ResizeUnit.h"
#include "platform/foundation/NSCollections.h"
#include "platform/foundation/text/FormatText.h"

#include <exception>

namespace kestrine {

namespace {

/// The only place that catches the exceptions of a job, including lack of memory: the next file follows.
void runJob(const OptionalString& path, const ResizeSets& sets) {
    try {
        const auto job = std::make_shared<ResizeUnit>();
        job->setValueForKey(path ? path->object() : nullptr, u"filepath");
        job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>(sets.begin(), sets.end())),
                            u"resizeSets");
        job->setValueForKey(path ? path->deletingLastPathComponent().object() : nullptr, u"saveFolderPath");
        job->resize();
    } catch (const std::exception&) {
        return; // no output for this file
    }
}

} // namespace

void listSets(const ResizeSets& sets, StandardOutput& output) {
    constexpr std::size_t pieceSize = 64 * 1024;
    std::string text;
    for (const auto& set : sets) {
        text += expandedFormatText(set->name().value_or(u"").utf8()) + "\n";
        if (text.size() < pieceSize)
            continue;
        output.write(text);
        text.clear();
    }
    output.write(text);
}

OptionalString pathForArgument(const NSString& argument, const OptionalString& PWD) {
    if (argument.contains(u"/Volumes") || argument.contains(u"~/"))
        return argument;
    return PWD ? OptionalString(PWD->appendingPathComponent(argument)) : std::nullopt;
}

void convertFiles(const PresetSelection& selection, const OptionalString& PWD, StandardOutput& output) {
    if (selection.sets.empty())
        return;
    for (const NSString& argument : selection.files) {
        // Written before the job begins, so that the user sees which file is being converted.
        output.write(expandedFormatText(argument.utf8()) + " converting...");
        runJob(pathForArgument(argument, PWD), selection.sets);
        output.write(" and done!!\n");
    }
}

} // namespace kestrine
