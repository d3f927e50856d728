// Planes: the samples of a PSD file as they are stored, one plane after the other.
#pragma once

#include "platform/imageio/psd/Header.h"

#include <memory>
#include <span>

namespace kestrine::psd {

/// Reads the rows of one plane from top to bottom.
class Plane {
public:
    virtual ~Plane() = default;

    /// Fills `row` with the samples of the next row.
    virtual Result<void> readRow(std::span<std::uint8_t> row) = 0;
};

/// The first planes of the file: those of colour, then alpha if the picture has it. They may be read
/// independently of each other.
Result<std::vector<std::unique_ptr<Plane>>> openPlanes(const std::shared_ptr<const ByteReader>& reader,
                                                       const Header& header);

} // namespace kestrine::psd
