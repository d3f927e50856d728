#include "kestrinectl/Words.h"

namespace kestrine {

namespace {

/// No word begins like this by chance: it is no character of any text.
const std::string mark = "\xff\x01";

} // namespace

std::vector<std::string> markedWords(int count, char** values) {
    std::vector<std::string> words;
    for (int i = count - 1; i > 0; --i) {
        const std::string word = values[i];
        words.push_back(word.starts_with('[') ? mark + word : word);
    }
    return words;
}

std::string typedWord(const std::string& marked) {
    return marked.starts_with(mark) ? marked.substr(mark.size()) : marked;
}

} // namespace kestrine
