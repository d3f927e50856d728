// PagePlace: where a page is written, and the browser that shows it.
#pragma once

#include "kestrinectl/convert/ConvertInputs.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace kestrine {

class PagePlace {
public:
    /// Adds -o, --overwrite and --open to a command; it writes into this object, which must outlive the
    /// parsing.
    void addTo(CLI::App& command);

    /// Fails before anything is converted: throws CommandError without a place, and if the page may not or
    /// cannot be written there. `pictures` are never overwritten.
    void check(const std::vector<ConvertInput>& pictures) const;

    /// Writes the page in one step and opens it if that was asked for. Throws CommandError.
    void writeAndOpen(const std::string& page) const;

    /// The path of the page as typed; absolute for a temporary page.
    std::string typedPath() const;

private:
    std::string path() const; ///< absolute
    void write(const std::string& page) const;
    void open() const;

    std::optional<std::string> output_;
    bool overwrites_ = false;
    bool opens_ = false;
};

} // namespace kestrine
