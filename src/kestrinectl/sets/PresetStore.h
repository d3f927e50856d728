// PresetStore: the stored sets and the selection, for reading, changing and storing them again.
#pragma once

#include "models/StoredPresets.h"
#include "platform/foundation/NSUserDefaults.h"
#include "platform/host/files/FolderLock.h"

#include <set>

namespace kestrine {

/// Positions count from 0 here and from 1 in messages and options.
class PresetStore {
public:
    /// Reads the presets of the user. Throws CommandError when there are presets that cannot be read, so that
    /// they are not overwritten by mistake.
    static PresetStore load();
    /// The same for a run to which sets matter little: there are none, after a warning, if they cannot be
    /// read.
    static PresetStore loadOrWarn();
    /// The same as load(), with a lock that other processes which call this wait for, so that no concurrent
    /// change is lost. The lock is released with the object.
    static PresetStore loadForChange();

    const ResizeSets& sets() const { return sets_; }
    const std::set<std::size_t>& selection() const { return selection_; }
    /// The file that the presets are read from, or that will be created.
    static std::string path();

    /// The position of the set that `word`, an argument, names: a name, or "@3" for the third set.
    /// Throws CommandError when there is no such set, or when several have the name.
    std::size_t positionOf(const std::string& word) const;

    /// The position of the only set with this name, or else of the only one whose name differs just in how
    /// its letters are composed (Unicode normalization). Throws CommandError when there is none, or when
    /// several have the name.
    std::size_t positionNamed(const std::string& name) const;

    void append(std::shared_ptr<const ResizeSet> set) { sets_.push_back(std::move(set)); }
    void replace(std::size_t position, std::shared_ptr<const ResizeSet> set) {
        sets_[position] = std::move(set);
    }
    /// The remaining sets keep their selection.
    void remove(const std::set<std::size_t>& positions);
    void select(std::set<std::size_t> positions) { selection_ = std::move(positions); }

    /// Writes the sets and the selection atomically and keeps everything else in the preferences. Throws
    /// CommandError.
    void save();

private:
    std::vector<std::size_t> positionsNamed(const std::string& name) const;

    PresetStore(NSUserDefaults defaults, PropertyList domain)
        : defaults_(std::move(defaults)), domain_(std::move(domain)) {}

    NSUserDefaults defaults_;
    PropertyList domain_;
    std::optional<FolderLock> lock_;
    ResizeSets sets_;
    std::set<std::size_t> selection_;
};

} // namespace kestrine
