#include "kestrinectl/desktop/EachTarget.h"

#include "kestrinectl/text/Messages.h"

namespace kestrine {

std::string placeOf(const DesktopTarget& target) { return target.place(Environment::ofProcess()); }

Result<ActionPlan> planFor(const DesktopTarget& target, const DesktopActions& actions, bool overwrites) {
    const std::string place = placeOf(target);
    if (place.empty())
        return Failure{Reason::notFound, "there is no home folder; set HOME"};
    return target.plan(place, actions, overwrites);
}

std::string sentenceAbout(const DesktopTarget& target, const std::string& sentence) {
    return std::string(target.title) + ": " + sentence;
}

void forEachTarget(const std::function<bool(const DesktopTarget& target)>& work, const char* complaint) {
    bool isComplete = true;
    for (const DesktopTarget& target : desktopTargets()) {
        try {
            isComplete = work(target) && isComplete;
        } catch (const CommandError& error) {
            printError(error.what());
            isComplete = false;
        }
    }
    if (!isComplete)
        throw CommandError(complaint);
}

} // namespace kestrine
