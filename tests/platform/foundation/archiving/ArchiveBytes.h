// Archives for tests in hexadecimal notation, which may contain spaces.
#pragma once

#include "platform/foundation/archiving/NSUnarchiver.h"
#include "platform/host/Bytes.h"

#include <string>
#include <string_view>

namespace kestrine::testing {

Bytes fromHex(std::string_view hex);
std::string toHex(ByteView bytes);
/// `text` in hexadecimal notation.
std::string hexOf(std::string_view text);

inline constexpr std::string_view littleHeader = "04 0b 73747265616d7479706564 81e803";
inline constexpr std::string_view bigHeader = "04 0b 747970656473747265616d 8103e8";

/// A little-endian archive: the header, the type "@" (shared string 0), and `root`.
Bytes archiveOf(std::string_view root);
/// An archive of one object (number 0) of a class A (number 1, shared string 1) without superclass.
Bytes archiveOfValues(std::string_view groups, std::string_view header = littleHeader);
/// A new class up to its version. A superclass must follow.
std::string newClass(std::string_view name, std::string_view version = "00");
/// The root class without superclass.
std::string newRootClass();
/// A new type string.
std::string newType(std::string_view type);

/// A list of two presets, named "Web" and "Thumb 50%", as the desktop application stores it.
inline constexpr std::string_view twoPresets =
    "040b73747265616d747970656481e8038401408484840e4e534d757461626c654172726179008484074e5341"
    "72726179008484084e534f626a6563740085840169029284848409526573697a65536574049592848484084e"
    "53537472696e67019584012b035765628684016300960284016681b0049b81b0049b649b81200396009b8300"
    "007a429a019a019a019a009a018692849792849999095468756d6220353025869a0096019b009b009b833333"
    "05429b81b00496019b469a009a019a009a019a008686";

/// The same list, written on a big-endian machine.
inline constexpr std::string_view twoPresetsBigEndian =
    "040b747970656473747265616d8103e88401408484840e4e534d757461626c654172726179008484074e5341"
    "72726179008484084e534f626a6563740085840169029284848409526573697a65536574049592848484084e"
    "53537472696e67019584012b03576562868401630096028401668104b09b8104b09b649b81032096009b8342"
    "7a00009a019a019a019a009a018692849792849999095468756d6220353025869a0096019b009b009b834205"
    "33339b8104b096019b469a009a019a009a019a008686";

/// An index set with the index 2.
inline constexpr std::string_view oneIndex =
    "040b73747265616d747970656481e8038401408484840a4e53496e646578536574008484084e534f626a656374"
    "0085840149019502950186";

/// An index set with 0 and 2 to 4, and an empty one.
inline constexpr std::string_view twoRanges =
    "040b73747265616d747970656481e8038401408484840a4e53496e646578536574008484084e534f626a656374"
    "008584014902950095019502950386";
inline constexpr std::string_view noIndexes =
    "040b73747265616d747970656481e8038401408484840a4e53496e646578536574008484084e534f626a656374"
    "00858401490086";

} // namespace kestrine::testing
