// DesktopTargets: the file managers for which actions can be installed.
#pragma once

#include "kestrinectl/desktop/ActionPlan.h"
#include "platform/host/process/Environment.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrine {

/// The actions that file managers shall have: one for each set.
struct DesktopActions {
    std::vector<std::string> setNames; ///< no name twice; all can be shown in menus
    std::string program;               ///< the path of kestrinectl
};

/// The words that begin the command line of a set's action, after the program.
std::string runArguments(const std::string& setName);

/// What must change in a place, which need not exist. Edited actions stay unless the plan `overwrites`.
using ActionPlanner = Result<ActionPlan>(const std::string& place, const DesktopActions& actions,
                                         bool overwrites);

struct DesktopTarget {
    std::string_view title;   ///< for people
    std::string_view program; ///< the program of the file manager
    /// The folder or file that holds the actions; "" for a user without a home.
    std::string (*place)(const Environment& environment);
    ActionPlanner* plan;
};

/// All of them.
std::span<const DesktopTarget> desktopTargets();

/// The plans, one per file manager.
namespace desktop {
ActionPlanner planOfNautilus, planOfCaja, planOfDolphin, planOfNemo, planOfThunar;
} // namespace desktop

/// The name of the submenu in which the actions are, where a file manager has submenus.
inline constexpr std::string_view actionMenu = "Resize";

} // namespace kestrine
