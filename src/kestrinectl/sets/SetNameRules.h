// SetNameRules: which names of sets have surprising effects.
#pragma once

#include "models/ResizeSet.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// The position, from 1 on, that a word such as "@3" means; nullopt for any other word.
std::optional<std::size_t> positionIn(const std::string& word);

/// Why a set should not get this name: it would lead to another folder than one named after the set, no
/// folder can have it, or it looks like a position. A clause without full stop; nullopt for a good name.
std::optional<std::string> objectionTo(const std::string& name);

/// Warnings about a name that works. Clauses without full stop.
std::vector<std::string> oddities(const std::string& name);

/// Findings about the name of a stored set: objections, oddities, and other sets whose name is equal or looks
/// equal. Clauses without full stop.
std::vector<std::string> nameFindings(const ResizeSets& sets, std::size_t position);

} // namespace kestrine
