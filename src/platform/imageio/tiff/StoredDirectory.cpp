#include "platform/imageio/tiff/StoredDirectory.h"

#include "platform/host/LittleEndian.h"

namespace kestrine::tiff {

namespace {

constexpr std::uint64_t entryBytes = 12;

std::uint64_t evenly(std::uint64_t size) { return size + size % 2; }

std::uint64_t bytesOfEntries(const StoredDirectory& directory) {
    return 2 + entryBytes * directory.size() + 4;
}

} // namespace

std::uint64_t storedBytes(const StoredDirectory& directory) {
    std::uint64_t bytes = bytesOfEntries(directory);
    for (const StoredField& field : directory)
        bytes += field.fitsEntry() ? 0 : evenly(field.values.size());
    return bytes;
}

void appendDirectory(Bytes& file, const StoredDirectory& directory) {
    std::uint64_t valuesAt = file.size() + bytesOfEntries(directory);
    appendLittleEndian(file, directory.size(), 2);
    for (const StoredField& field : directory) {
        appendLittleEndian(file, field.tag, 2);
        appendLittleEndian(file, field.type, 2);
        appendLittleEndian(file, field.count, 4);
        if (field.fitsEntry()) {
            file.insert(file.end(), field.values.begin(), field.values.end());
            file.insert(file.end(), 4 - field.values.size(), 0);
        } else {
            appendLittleEndian(file, valuesAt, 4);
            valuesAt += evenly(field.values.size());
        }
    }
    appendLittleEndian(file, 0, 4); // no next directory
    for (const StoredField& field : directory)
        if (!field.fitsEntry()) {
            file.insert(file.end(), field.values.begin(), field.values.end());
            file.insert(file.end(), field.values.size() % 2, 0);
        }
}

} // namespace kestrine::tiff
