// Words: the arguments on their way through the option parser, which takes "[a,b]" for a list of two where it
// expects several words, and "--" for the end of a command that has a file already. Words that begin with a
// bracket, and behind "--" with a dash, get a mark in front before parsing, and lose it when they are used.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

/// The arguments behind the program's name, marked, last one first as the parser wants them.
std::vector<std::string> markedWords(int count, char** values);

/// What was typed.
std::string typedWord(const std::string& marked);

} // namespace kestrine
