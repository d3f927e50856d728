// kestrine: applies stored presets to the files on its command line. Quiet, and its exit status is always 0.

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"
#include "commandline/PresetSelection.h"
#include "commandline/RunLoop.h"
#include "models/StoredPresets.h"
#include "platform/foundation/NSUserDefaults.h"
#include "platform/host/process/StandardStreams.h"
#include "platform/imageio/worker/WorkerEngine.h"

#include <cstdlib>
#include <exception>

namespace kestrine {

namespace {

/// Throws only before the first output.
void run(int count, char** values) {
    std::vector<NSString> arguments;
    for (int i = 0; i < count; ++i)
        arguments.push_back(NSString::fromUTF8(values[i]));
    const Environment environment = Environment::ofProcess();
    const auto domain = NSUserDefaults(environment).persistentDomainForName(presetsDomain);
    // A value that cannot be read counts as absent; the two values do not depend on each other.
    const Result<ResizeSets> sets = domain ? storedSets(*domain) : domain.failure();
    const auto selection = domain ? storedSelection(*domain) : domain.failure();
    const PresetSelection chosen =
        selectPresets(arguments, sets ? *sets : ResizeSets(), selection ? **selection : NSIndexSet());
    StandardOutput output;
    if (chosen.listsSets)
        return listSets(sets ? *sets : ResizeSets(), output);
    WorkerEngine decodersElsewhere(exifQuestions, Isolation::automatic, 1);
    PictureEngine::setCurrent(&decodersElsewhere);
    const auto PWD = environment.variable("PWD");
    convertFiles(chosen, PWD ? OptionalString(NSString::fromUTF8(*PWD)) : std::nullopt, output);
}

/// Returns whether there was enough memory to begin.
bool couldRun(int count, char** values) {
    try {
        run(count, values);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

} // namespace kestrine

int main(int count, char** values) {
    kestrine::prepareStandardStreams();
    std::set_terminate([] { std::_Exit(0); }); // without memory for an exception: as quiet as any other end
    if (!kestrine::couldRun(count, values))
        (void)kestrine::couldRun(count, values); // other programs may have returned memory meanwhile
    return 0;
}
