#include "kestrinectl/text/Words.h"

#include <algorithm>

namespace kestrine {

namespace {

/// Not valid in UTF-8 or any other encoding in use, so no real word begins with it.
const std::string mark = "\xff\x01";

} // namespace

std::vector<std::string> markedWords(int count, char** values) {
    std::vector<std::string> words;
    bool optionsHaveEnded = false;
    for (int i = 1; i < count; ++i) {
        const std::string word = values[i];
        if (!optionsHaveEnded && word == "--")
            optionsHaveEnded = true;
        else if (word.starts_with('[') || (optionsHaveEnded && word.starts_with('-')))
            words.push_back(mark + word);
        else
            words.push_back(word);
    }
    std::ranges::reverse(words);
    return words;
}

std::string typedWord(const std::string& marked) {
    return marked.starts_with(mark) ? marked.substr(mark.size()) : marked;
}

} // namespace kestrine
