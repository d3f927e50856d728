#include "kestrinectl/shards/PlanFile.h"

#include "kestrinectl/OpenedInput.h"
#include "kestrinectl/text/ShownPath.h"

namespace kestrine {

PlanFile::PlanFile(const std::string& path)
    : stream_(openedInput("plan", path)), reader_(stream_, shownPath(path)) {}

} // namespace kestrine
