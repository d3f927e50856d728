#include "kestrinectl/desktop/ActionsOfSets.h"

#include "kestrinectl/desktop/Quoting.h"
#include "platform/host/process/ProgramPath.h"

#include <algorithm>

namespace kestrine {

ActionsOfSets actionsOf(const ResizeSets& sets) {
    ActionsOfSets result{{.program = pathOfThisProgram()}};
    std::vector<std::string> all;
    for (const auto& set : sets)
        all.push_back(set->name().value_or(u"").utf8());
    for (std::size_t i = 0; i < all.size(); ++i) {
        std::optional<std::string> objection = objectionToLabel(all[i]);
        if (!objection && std::ranges::count(all, all[i]) > 1)
            objection = "several sets have the name; 'kestrinectl sets edit --name' gives one another name";
        if (!objection)
            result.actions.setNames.push_back(all[i]);
        else if (std::ranges::find(all, all[i]) - all.begin() == static_cast<std::ptrdiff_t>(i))
            result.leftOut.push_back(leftOutSentence(all[i], *objection));
    }
    return result;
}

} // namespace kestrine
