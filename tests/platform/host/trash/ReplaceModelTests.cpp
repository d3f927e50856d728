// A small model of replacing in place: every order of the steps of two processes, and a crash of either after
// each step. docs/security.md describes the steps. A process that has crashed makes no further step, so every
// state that can be reached with some processes unfinished is also what a crash leaves, and every such state
// is checked.
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kestrine {
namespace {

/// What a file holds: the number of a picture, or a record of the trash.
constexpr int record = -1;

struct File {
    int content;
    bool isWhole;
    auto operator<=>(const File&) const = default;
};

/// The names are "a" and so on in the folder of the picture, "files/a" and "info/a" in the trash. A name that
/// begins with a dot is hidden.
struct Disk {
    std::map<std::string, unsigned> names; ///< to a position in `files`
    std::vector<File> files;
    std::set<int> kept; ///< the pictures that were ever complete under a name that people see
    auto operator<=>(const Disk&) const = default;

    bool has(const std::string& name) const { return names.contains(name); }
    unsigned create(File file) {
        files.push_back(file);
        return static_cast<unsigned>(files.size() - 1);
    }
    /// Fails if the name is in use.
    bool link(unsigned file, const std::string& name) {
        if (!names.emplace(name, file).second)
            return false;
        if (files[file].isWhole && name.front() != '.' && name.find('/') == std::string::npos)
            kept.insert(files[file].content);
        return true;
    }
    /// Fails if the new name is in use or the old one is not.
    bool renameExclusively(const std::string& from, const std::string& to) {
        if (!has(from) || has(to))
            return false;
        const unsigned file = names.at(from);
        names.erase(from);
        return link(file, to);
    }
};

/// How a process works on this file system.
struct Mechanisms {
    bool byCopy = false;     ///< the trash is on another file system
    bool isNameless = true;  ///< files can be created without a name
    bool isExclusive = true; ///< there is a rename that never replaces
    bool isStaged = false;   ///< the result is written before the original goes
    bool isCareless = false; ///< the tool does not compare what it removes
    bool isNewcomer = false; ///< not our tool: puts a new file in place of the picture, once
    auto operator<=>(const Mechanisms&) const = default;
};

/// A process that replaces "a" by the picture `result`. Each step is one call that others can see.
struct Process {
    int number;
    Mechanisms mechanisms;
    std::string step = "open";
    unsigned attempt = 0;
    unsigned source = 0, copy = 0, data = 0;
    std::string candidate{};
    auto operator<=>(const Process&) const = default;

    int result() const { return 10 + number; }
    std::string own(const std::string& folder) const { return folder + ".tmp" + std::to_string(number); }
    std::string aside() const { return ".aside" + std::to_string(number); }
    std::string item() const { return attempt == 0 ? "a" : "a." + std::to_string(attempt + 1); }
    bool isDone() const { return step == "done"; }
};

using Step = std::function<std::string(Disk&, Process&)>;

std::string afterOpening(const Process& process) {
    return process.mechanisms.isStaged ? "create staged"
           : process.mechanisms.byCopy ? "create copy"
                                       : "record";
}

std::string begin(Disk& disk, Process& process) {
    if (process.mechanisms.isNewcomer) {
        disk.kept.erase(disk.has("a") ? disk.files[disk.names["a"]].content : 0); // replaced on purpose
        disk.names.erase("a");
        disk.link(disk.create({process.result(), true}), "a");
        return "done";
    }
    if (!disk.has("a"))
        return "done";
    process.source = disk.names["a"];
    return afterOpening(process);
}

std::string createStaged(Disk& disk, Process& process) {
    process.data = disk.create({process.result(), false});
    disk.link(process.data, process.own(""));
    return "fill staged";
}

std::string fillStaged(Disk& disk, Process& process) {
    disk.files[process.data].isWhole = true;
    return process.mechanisms.byCopy ? "create copy" : "record";
}

std::string createCopy(Disk& disk, Process& process) {
    process.copy = disk.create({disk.files[process.source].content, false});
    if (process.mechanisms.isNameless)
        return "fill copy";
    if (!disk.has(process.own("info/"))) {
        disk.link(disk.create({record, true}), process.own("info/"));
        return "create copy"; // the next call names the copy
    }
    disk.link(process.copy, process.own("files/"));
    return "fill copy";
}

std::string fillCopy(Disk& disk, Process& process) {
    disk.files[process.copy].isWhole = true;
    return "record";
}

std::string makeRecord(Disk& disk, Process& process) {
    if (disk.link(disk.create({record, true}), "info/" + process.item()))
        return process.mechanisms.byCopy ? "name copy" : process.mechanisms.isExclusive ? "move" : "link";
    ++process.attempt;
    return "record";
}

/// The item's name in the trash is in use, or there is nothing to move.
std::string removeRecord(Disk& disk, Process& process) {
    disk.names.erase("info/" + process.item());
    ++process.attempt;
    return disk.has("a") ? "record" : "publish";
}

std::string move(Disk& disk, Process& process) {
    return disk.renameExclusively("a", "files/" + process.item()) ? "publish" : "remove record";
}

std::string link(Disk& disk, Process& process) {
    if (!disk.has("a"))
        return "remove record";
    process.source = disk.names["a"];
    return disk.link(process.source, "files/" + process.item()) ? "set aside" : "remove record";
}

std::string nameCopy(Disk& disk, Process& process) {
    const std::string name = "files/" + process.item();
    if (process.mechanisms.isNameless)
        return disk.link(process.copy, name) ? "set aside" : "remove record";
    return disk.renameExclusively(process.own("files/"), name) ? "forget copy" : "remove record";
}

std::string forgetCopy(Disk& disk, Process& process) {
    disk.names.erase(process.own("info/"));
    return "set aside";
}

std::string setAside(Disk& disk, Process& process) {
    return disk.renameExclusively("a", process.aside()) ? "compare"
           : process.mechanisms.byCopy                  ? "remove copy"
                                                        : "publish";
}

std::string compare(Disk& disk, Process& process) {
    if (disk.names[process.aside()] != process.source && !process.mechanisms.isCareless)
        return "put back";
    disk.names.erase(process.aside());
    return "publish";
}

std::string putBack(Disk& disk, Process& process) {
    for (const char* name : {"a", "a.2", "a.3", "a.4"})
        if (disk.renameExclusively(process.aside(), name))
            break;
    return process.mechanisms.byCopy ? "remove copy" : "publish";
}

/// Reached when the original is no longer what was copied.
std::string removeCopy(Disk& disk, Process& process) {
    disk.names.erase("files/" + process.item());
    return "remove its record";
}

std::string removeItsRecord(Disk& disk, Process& process) {
    disk.names.erase("info/" + process.item());
    return "publish";
}

std::string publish(Disk& disk, Process& process) {
    if (!process.mechanisms.isStaged && process.data == 0) {
        process.data = disk.create({process.result(), false}); // without a name
        return "fill result";
    }
    for (const char* name : {"a", "a_1", "a_2", "a_3"})
        if (!disk.has(name)) {
            process.candidate = name;
            return "take name";
        }
    return "done";
}

std::string fillResult(Disk& disk, Process& process) {
    disk.files[process.data].isWhole = true;
    return "publish";
}

/// Another process may have taken the name since it was found free.
std::string takeName(Disk& disk, Process& process) {
    const bool taken = process.mechanisms.isStaged
                           ? disk.renameExclusively(process.own(""), process.candidate)
                           : disk.link(process.data, process.candidate);
    return taken ? "done" : "publish";
}

const std::map<std::string, Step> steps{
    {"open", begin},
    {"create staged", createStaged},
    {"fill staged", fillStaged},
    {"create copy", createCopy},
    {"fill copy", fillCopy},
    {"record", makeRecord},
    {"remove record", removeRecord},
    {"move", move},
    {"link", link},
    {"name copy", nameCopy},
    {"forget copy", forgetCopy},
    {"set aside", setAside},
    {"compare", compare},
    {"put back", putBack},
    {"remove copy", removeCopy},
    {"remove its record", removeItsRecord},
    {"publish", publish},
    {"fill result", fillResult},
    {"take name", takeName},
};

struct State {
    Disk disk;
    Process one, other;
    auto operator<=>(const State&) const = default;
};

bool isHidden(const std::string& name) { return name.find('.') == name.rfind('/') + 1; }

/// Why this state must not be; "" if it may. A whole file that is set aside is present: it has a hidden name
/// beside its place.
std::string violation(const State& state) {
    const Disk& disk = state.disk;
    std::set<int> present;
    for (const auto& [name, position] : disk.names) {
        const File& file = disk.files[position];
        const bool isItem = name.starts_with("files/"), isRecord = name.starts_with("info/");
        if (isItem && !disk.has("info/" + name.substr(6)))
            return name + " has no record";
        if (!isHidden(name) && !file.isWhole)
            return name + " is not whole";
        if (name.starts_with(".aside") || (!isHidden(name) && !isRecord))
            present.insert(file.content);
    }
    for (const int content : disk.kept)
        if (!present.contains(content))
            return "picture " + std::to_string(content) + " is lost";
    return "";
}

/// What must hold besides when both processes have finished.
std::string violationAtEnd(const State& state) {
    for (const auto& [name, position] : state.disk.names) {
        if (isHidden(name))
            return name + " is left";
        if (name.starts_with("info/") && !state.disk.has("files/" + name.substr(5)))
            return name + " is the record of nothing";
    }
    return "";
}

/// Visits every state that can be reached from `state`.
void explore(const State& state, std::set<State>& seen, std::string& problem) {
    if (!problem.empty() || !seen.insert(state).second)
        return;
    problem = violation(state);
    const bool isEnd = state.one.isDone() && state.other.isDone();
    if (problem.empty() && isEnd)
        problem = violationAtEnd(state);
    for (Process State::*const process : {&State::one, &State::other}) {
        if ((state.*process).isDone())
            continue;
        State next = state;
        Process& acting = next.*process;
        acting.step = steps.at(acting.step)(next.disk, acting);
        explore(next, seen, problem);
        if (!problem.empty()) {
            problem =
                (state.*process).step + " by " + std::to_string((state.*process).number) + "; " + problem;
            return;
        }
    }
}

/// Returns the way to a state that must not be, or "". `states` counts those that were visited.
std::string problemWith(const Mechanisms& one, const Mechanisms& other, std::size_t& states) {
    State start{{}, {1, one}, {2, other}};
    start.disk.link(start.disk.create({1, true}), "a");
    std::set<State> seen;
    std::string problem;
    explore(start, seen, problem);
    states += seen.size();
    return problem;
}

/// A nameless copy or none, and an exclusive rename or none, are what makes a difference.
std::vector<Mechanisms> allMechanisms() {
    std::vector<Mechanisms> all;
    for (const bool isStaged : {false, true})
        for (const bool byCopy : {false, true})
            for (const bool isModern : {false, true})
                all.push_back({.byCopy = byCopy,
                               .isNameless = isModern,
                               .isExclusive = isModern,
                               .isStaged = isStaged});
    return all;
}

TEST(ReplaceModel, twoToolsThatReplaceTheSamePictureLoseNothing) {
    std::size_t states = 0;
    const std::vector<Mechanisms> all = allMechanisms();
    for (std::size_t one = 0; one < all.size(); ++one)
        for (std::size_t other = 0; other <= one; ++other)
            ASSERT_EQ(problemWith(all[one], all[other], states), "");
    EXPECT_GT(states, 10'000u);
}

TEST(ReplaceModel, aFileThatAnotherProgramPutsInPlaceOfThePictureIsNotLost) {
    std::size_t states = 0;
    for (const Mechanisms& tool : allMechanisms())
        ASSERT_EQ(problemWith(tool, {.isNewcomer = true}, states), "");
    EXPECT_GT(states, 500u);
}

TEST(ReplaceModel, theLossIsFoundIfTheOriginalIsRemovedWithoutAnotherLook) {
    std::size_t states = 0;
    for (Mechanisms tool : allMechanisms()) {
        tool.isCareless = true;
        const bool needsLook = tool.byCopy || !tool.isExclusive;
        EXPECT_EQ(problemWith(tool, {.isNewcomer = true}, states).ends_with("picture 12 is lost"), needsLook);
    }
}

} // namespace
} // namespace kestrine
