// Words: marks arguments that the option parser would misread. It reads "[a,b]" as a list of two words where
// it accepts several, and "--" as the end of a command that already has a file. Words that begin with a
// bracket, and words after "--" that begin with a dash, get a mark in front, which is removed after parsing.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

/// The arguments after the program's name, marked, in reverse order as the parser expects them.
std::vector<std::string> markedWords(int count, char** values);

/// The word as typed, without a mark.
std::string typedWord(const std::string& marked);

} // namespace kestrine
