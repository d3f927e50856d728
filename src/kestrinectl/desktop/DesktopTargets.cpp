#include "kestrinectl/desktop/DesktopTargets.h"

#include "kestrinectl/desktop/Quoting.h"
#include "platform/host/files/PathParts.h"

#include <array>

namespace kestrine {

namespace {

std::string below(const std::string& base, const std::string& path) {
    return base.empty() ? "" : joinedPath(base, path);
}

const std::array<DesktopTarget, 5> targetTable = {{
    {"Nautilus", "nautilus",
     [](const Environment& user) { return below(user.xdgDataHome(), "nautilus/scripts/Resize"); },
     desktop::planOfNautilus},
    {"Dolphin", "dolphin",
     [](const Environment& user) { return below(user.xdgDataHome(), "kio/servicemenus"); },
     desktop::planOfDolphin},
    {"Thunar", "thunar",
     [](const Environment& user) { return below(user.xdgConfigHome(), "Thunar/uca.xml"); },
     desktop::planOfThunar},
    {"Nemo", "nemo", [](const Environment& user) { return below(user.xdgDataHome(), "nemo/actions"); },
     desktop::planOfNemo},
    {"Caja", "caja",
     [](const Environment& user) { return below(user.xdgConfigHome(), "caja/scripts/Resize"); },
     desktop::planOfCaja},
}};

} // namespace

std::span<const DesktopTarget> desktopTargets() { return targetTable; }

std::string runArguments(const std::string& setName) {
    return "desktop run --set-word " + wordOfSetName(setName);
}

} // namespace kestrine
