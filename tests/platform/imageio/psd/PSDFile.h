// PSDFile: makes PSD and PSB files for tests.
#pragma once

#include "platform/host/BigEndian.h"

#include <string>
#include <vector>

namespace kestrine::testing {

enum Mode : unsigned {
    bitmap = 0,
    grayMode = 1,
    indexedMode = 2,
    rgbMode = 3,
    cmykMode = 4,
    multichannel = 7,
    duotone = 8,
    labMode = 9
};

/// Fields that a test does not set are valid.
struct PSDFile {
    unsigned version = 1, planes = 3, width = 2, height = 1, bits = 8, mode = rgbMode;
    Bytes colorData = {};
    Bytes resources = {}; ///< blocks made by resource()
    Bytes layers = {};    ///< the whole section without its length
    unsigned compression = 0;
    Bytes pixels = {}; ///< from the byte after the compression

    Bytes make() const {
        Bytes file = {'8', 'B', 'P', 'S'};
        appendBigEndian(file, version, 2);
        file.resize(12);
        appendBigEndian(file, planes, 2);
        appendBigEndian(file, height, 4);
        appendBigEndian(file, width, 4);
        appendBigEndian(file, bits, 2);
        appendBigEndian(file, mode, 2);
        appendSection(file, colorData, 4);
        appendSection(file, resources, 4);
        appendSection(file, layers, version == 2 ? 8 : 4);
        appendBigEndian(file, compression, 2);
        file.insert(file.end(), pixels.begin(), pixels.end());
        return file;
    }

private:
    static void appendSection(Bytes& file, const Bytes& content, int lengthBytes) {
        appendBigEndian(file, content.size(), lengthBytes);
        file.insert(file.end(), content.begin(), content.end());
    }
};

/// A block of resources with a name.
inline Bytes resource(unsigned identifier, const Bytes& content, const std::string& name = "") {
    Bytes block = {'8', 'B', 'I', 'M'};
    appendBigEndian(block, identifier, 2);
    block.push_back(static_cast<std::uint8_t>(name.size()));
    block.insert(block.end(), name.begin(), name.end());
    block.resize((block.size() + 1) / 2 * 2);
    appendBigEndian(block, content.size(), 4);
    block.insert(block.end(), content.begin(), content.end());
    block.resize((block.size() + 1) / 2 * 2);
    return block;
}

/// A section with `count` layers (without their content), followed by blocks. Lengths have `lengthBytes`.
inline Bytes layerSection(int count, const Bytes& blocks = {}, int lengthBytes = 4) {
    Bytes section;
    appendBigEndian(section, 4, lengthBytes);
    appendBigEndian(section, static_cast<std::uint16_t>(count), 2);
    appendBigEndian(section, 0, 2);
    appendBigEndian(section, 0, 4); // no mask
    section.insert(section.end(), blocks.begin(), blocks.end());
    return section;
}

/// A block after the layers, whose length has `lengthBytes`.
inline Bytes layerBlock(const std::string& key, const Bytes& content, int lengthBytes = 4) {
    Bytes block = {'8', 'B', 'I', 'M'};
    block.insert(block.end(), key.begin(), key.end());
    appendBigEndian(block, content.size(), lengthBytes);
    block.insert(block.end(), content.begin(), content.end());
    block.resize((block.size() + 3) / 4 * 4);
    return block;
}

} // namespace kestrine::testing
