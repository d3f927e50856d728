// PresetStore: the stored sets and the selection, to be looked at, changed and stored again.
#pragma once

#include "models/StoredPresets.h"
#include "platform/foundation/NSUserDefaults.h"
#include "platform/host/files/FolderLock.h"

#include <set>

namespace kestrine {

/// Positions count from 0 here; people see them from 1.
class PresetStore {
public:
    /// Reads the presets of the user. Throws CommandError when there are some that cannot be read: they must
    /// not be overwritten by mistake.
    static PresetStore load();
    /// The same, and no other process that does so gets its presets before this object is gone: a change is
    /// lost to none.
    static PresetStore loadForChange();

    const ResizeSets& sets() const { return sets_; }
    const std::set<std::size_t>& selection() const { return selection_; }
    /// The file that was read, or that will be made.
    static std::string path();

    /// The position of the set that `text` names: a name, or "@3" for the third. Throws CommandError when
    /// there is none, or when several have the name.
    std::size_t positionOf(const std::string& text) const;

    void append(std::shared_ptr<const ResizeSet> set) { sets_.push_back(std::move(set)); }
    void replace(std::size_t position, std::shared_ptr<const ResizeSet> set) {
        sets_[position] = std::move(set);
    }
    /// The selection follows the sets that stay.
    void remove(const std::set<std::size_t>& positions);
    void select(std::set<std::size_t> positions) { selection_ = std::move(positions); }

    /// Stores everything, atomically; whatever else the preferences hold is kept. Throws CommandError.
    void save();

private:
    PresetStore(NSUserDefaults defaults, PropertyList domain)
        : defaults_(std::move(defaults)), domain_(std::move(domain)) {}

    NSUserDefaults defaults_;
    PropertyList domain_;
    std::optional<FolderLock> lock_;
    ResizeSets sets_;
    std::set<std::size_t> selection_;
};

} // namespace kestrine
