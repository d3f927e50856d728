// Diagnosis: what works on this system, and how to fix the rest. Changes nothing.
#pragma once

#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/inspect/TrashPlace.h"
#include "platform/host/process/SystemLibraries.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace kestrine {

/// A place where the presets may be.
struct PresetsPlace {
    std::string path;
    bool isThere = false;
    bool isUsed = false; ///< it is the first that exists
};

/// What is unusual about a stored set.
struct SetFinding {
    std::size_t position = 0; ///< counts from 1
    std::string set;          ///< its name
    std::string text;         ///< a clause without full stop
};

struct Diagnosis {
    std::vector<IsolationLayer> layers;
    std::vector<PresetsPlace> places;
    std::size_t sets = 0, selected = 0;
    std::vector<SetFinding> findings;
    std::string presetsProblem; ///< why the presets cannot be read; "" if they can
    std::vector<SystemLibrary> missing;
    std::string folder; ///< as typed; `trash` describes it
    TrashPlace trash;
};

/// Throws CommandError if there is no such folder. Starts a worker to find out what isolates it.
Diagnosis diagnose(const std::string& folder);

std::vector<std::string> linesOf(const Diagnosis& system);
nlohmann::ordered_json toJSON(const Diagnosis& system);

} // namespace kestrine
