// NameClaims: which conversions must wait for which others, so that each result gets the name that it would
// get if all files were converted one after another.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace kestrine {

/// Knows the jobs that have begun or wait, and not those that have ended, so that its size does not depend on
/// the number of files. For one thread at a time.
class NameClaims {
public:
    /// `isTaken`: whether a file has the name already.
    explicit NameClaims(std::function<bool(const std::string&)> isTaken) : isTaken_(std::move(isTaken)) {}

    /// Adds the next job. `wanted` are the paths that its results get if they are free, without links in
    /// folders, and `own` is the path that it makes free itself ("" for none). Returns the earlier jobs that
    /// must end before it may begin: those whose results may compete for a name with its results ("a.jpg",
    /// "a_1.jpg", ...), also as a file and a folder ("a", "a/b.jpg").
    std::set<std::size_t> add(std::size_t job, const std::vector<std::string>& wanted,
                              const std::string& own);

    /// The job has ended.
    void remove(std::size_t job);

private:
    struct Claim {
        std::size_t job;
        bool isContested; ///< whether its result may get a later choice
    };

    bool addEarlier(const std::string& path, std::set<std::size_t>& earlier) const;
    void addThoseOfFolders(const std::string& path, std::set<std::size_t>& earlier) const;
    bool addThoseInside(const std::string& path, std::set<std::size_t>& earlier) const;

    std::function<bool(const std::string&)> isTaken_;
    std::map<std::string, std::vector<Claim>> claims_;      ///< by path
    std::map<std::string, std::set<std::size_t>> numbered_; ///< jobs that want a later choice, by path
    std::unordered_map<std::size_t, std::vector<std::string>> wanted_; ///< by job
};

} // namespace kestrine
