#include "tests/platform/imageio/tiff/LZWCodes.h"

#include <map>

namespace kestrine::testing {

void LZWCodes::add(unsigned code) {
    const unsigned width = free_ < 511 ? 9 : free_ < 1023 ? 10 : free_ < 2047 ? 11 : 12;
    bytes_.resize((bits_ + width + 7) / 8);
    for (unsigned bit = width; bit-- > 0; ++bits_)
        bytes_[bits_ / 8] =
            static_cast<std::uint8_t>(bytes_[bits_ / 8] | (code >> bit & 1) << (7 - bits_ % 8));
    if (!isFirst_)
        ++free_;
    isFirst_ = code == clear;
    if (code == clear)
        free_ = 258;
}

void LZWCodes::add(std::initializer_list<unsigned> codes) {
    for (const unsigned code : codes)
        add(code);
}

void LZWCodes::addEncoded(ByteView bytes, std::size_t mostStrings) {
    std::map<Bytes, unsigned> table;
    Bytes string;
    const auto codeOf = [&](const Bytes& known) { return known.size() == 1 ? known[0] : table.at(known); };
    add(clear);
    for (const std::uint8_t byte : bytes) {
        Bytes longer = string;
        longer.push_back(byte);
        if (longer.size() > 1 && !table.contains(longer)) {
            add(codeOf(string));
            const auto code = static_cast<unsigned>(258 + table.size());
            table.emplace(longer, code);
            longer = {byte};
            if (code + 1 >= mostStrings) {
                add(clear);
                table.clear();
            }
        }
        string = longer;
    }
    if (!string.empty())
        add(codeOf(string));
}

} // namespace kestrine::testing
