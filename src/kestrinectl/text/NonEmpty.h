// nonEmpty: a check of options and arguments that take a path or another word.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace kestrine {

/// Accepts every word but "", which scripts give by mistake.
inline CLI::Validator nonEmpty() {
    return CLI::Validator(
        [](const std::string& word) -> std::string { return word.empty() ? "must not be empty" : ""; }, "");
}

} // namespace kestrine
