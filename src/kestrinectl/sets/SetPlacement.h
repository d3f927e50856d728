// SetPlacement: adds or changes sets whose names may already exist.
#pragma once

#include "kestrinectl/sets/PresetStore.h"

#include <CLI/CLI.hpp>

namespace kestrine {

/// What to do about an existing name; refuse it by default.
struct NameConflicts {
    bool overwrite = false;
    bool rename = false;

    /// Adds --overwrite and --rename to a command; it writes into this object, which must outlive the
    /// parsing.
    void addTo(CLI::App& command);
};

/// Puts sets into a store. Throws CommandError for a name that exists, unless the options solve the conflict:
/// `overwrite` replaces the first set of that name (the one that kestrine applies) and keeps its position and
/// selection; `rename` chooses a free name such as "Web 2".
class SetPlacement {
public:
    /// `acceptsEqualNames`: several sets that are added may have one name; none overwrites another.
    SetPlacement(PresetStore& store, NameConflicts conflicts, bool acceptsEqualNames = false)
        : store_(store), conflicts_(conflicts), acceptsEqualNames_(acceptsEqualNames) {}

    /// Adds a set at the end, or as described above. `where` begins all messages.
    void add(const std::shared_ptr<ResizeSet>& set, const std::string& where = "");

    /// Replaces the set at `position` by a changed one. Its old name does not count as a conflict. If the
    /// changed set overwrites another one, it gets that position, and the set at `position` is removed.
    void change(std::size_t position, const std::shared_ptr<ResizeSet>& set);

    /// The chosen names, as lines for the user.
    const std::vector<std::string>& notices() const { return notices_; }

private:
    std::vector<std::size_t> positionsNamed(const OptionalString& name) const;
    std::string giveFreeName(ResizeSet& set) const;
    void append(const std::shared_ptr<const ResizeSet>& set);

    PresetStore& store_;
    NameConflicts conflicts_;
    bool acceptsEqualNames_;
    std::vector<std::string> notices_;
    std::set<std::size_t> added_; ///< positions of the sets that add() put there
};

} // namespace kestrine
