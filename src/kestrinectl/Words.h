// Words: the arguments on their way through the option parser, which reads "[a,b]" as a list of two words
// where it expects several, and "--" as the end of a command that has a file already. Words that begin with a
// bracket, and words after "--" that begin with a dash, get a mark in front before parsing and lose it before
// use.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

/// The arguments after the program's name, marked, in reverse order as the parser expects them.
std::vector<std::string> markedWords(int count, char** values);

/// The word as typed, without a mark.
std::string typedWord(const std::string& marked);

} // namespace kestrine
