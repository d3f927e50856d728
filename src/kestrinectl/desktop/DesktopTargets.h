// DesktopTargets: the file managers for which actions can be installed.
#pragma once

#include "kestrinectl/desktop/ActionPlan.h"
#include "platform/host/process/Environment.h"

#include <span>
#include <string_view>

namespace kestrine {

struct DesktopTarget {
    std::string_view title;   ///< for people
    std::string_view program; ///< the program of the file manager
    /// The folder or file that holds the actions; "" for a user without a home.
    std::string (*place)(const Environment& environment);
    /// What must change there.
    Result<ActionPlan> (*plan)(const std::string& place, const DesktopActions& actions);
};

/// All of them.
std::span<const DesktopTarget> desktopTargets();

/// The plans, one per file manager. All can be called with a place that does not exist.
namespace desktop {
Result<ActionPlan> planOfNautilus(const std::string& folder, const DesktopActions& actions);
Result<ActionPlan> planOfCaja(const std::string& folder, const DesktopActions& actions);
Result<ActionPlan> planOfDolphin(const std::string& folder, const DesktopActions& actions);
Result<ActionPlan> planOfNemo(const std::string& folder, const DesktopActions& actions);
Result<ActionPlan> planOfThunar(const std::string& file, const DesktopActions& actions);
} // namespace desktop

/// The name of the submenu in which the actions are, where a file manager has submenus.
inline constexpr std::string_view actionMenu = "Resize";

/// "kestrine-01": the name of the action with this position, from 0 on, in files and groups.
std::string numberedActionName(std::size_t position);

} // namespace kestrine
