// Plan: the files of a batch, with the names that their results get, so that the batch can be converted in
// parts, by several processes or machines. docs/scale-out.md describes the format of the file.
#pragma once

#include "platform/host/files/ContentDigest.h"
#include "platform/host/files/FileMark.h"

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace kestrine {

/// What is the same for all files of a plan.
struct PlanHeader {
    std::size_t resultsPerFile = 1;
    std::string treatment; ///< JSON, see PlannedTreatment.h
};

/// A file of a plan. All paths are relative to the root of the plan.
struct PlanRecord {
    std::string source;
    std::uint64_t bytes = 0;          ///< of the source
    std::int64_t modified = 0;        ///< of the source, nanoseconds since 1970
    std::uint64_t group = 0;          ///< see NameGroups.h; records of a group are converted in one shard
    std::vector<std::string> results; ///< as many as the header says; "" for none

    bool operator==(const PlanRecord&) const = default;
};

/// Whether a path from a plan stays below the root: it is relative, not empty, and has no empty part, "." or
/// "..".
bool isBelowRoot(const std::string& path);

/// The beginning, a record, and the end of a plan as they are in the file.
std::string textOf(const PlanHeader& header);
std::string textOf(const PlanRecord& record);
std::string endOfPlan(std::uint64_t recordCount);

/// Reads a plan, which may come from anybody. The constructor and next() throw CommandError for anything that
/// is not a plan, is of a newer version, is damaged or cut off, or leads out of the root.
class PlanReader {
public:
    /// `stream` must outlive the reader. `name` is that of the plan, for messages.
    PlanReader(std::istream& stream, std::string name);

    const PlanHeader& header() const { return header_; }

    /// The next record; false after the last one.
    bool next(PlanRecord& record);

    /// A number by which the plan is recognised. Only after the last record.
    std::uint64_t digest() const { return digest_.digest().number; }

private:
    std::string field(std::size_t maxLength);
    std::string path();
    void readNumbers(PlanRecord& record);
    void readEnd();
    [[noreturn]] void throwDamaged(const std::string& what) const;

    std::istream& stream_;
    const std::string name_;
    PlanHeader header_;
    std::uint64_t count_ = 0; ///< of records so far
    RunningDigest digest_;
};

} // namespace kestrine
