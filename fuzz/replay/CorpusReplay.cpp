// Gives every file of a folder to one fuzzer, as the fuzzing engine would: what the fuzzer finds wrong ends
// the program. Usage: fuzz_NAME [--damaged] CORPUS_FOLDER
// With --damaged, also gives it every file cut off at several places and with changed bytes.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Input = std::vector<char>;

std::optional<Input> inputIn(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    Input input{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return file ? std::optional(input) : std::nullopt;
}

void give(const Input& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

void giveDamaged(const Input& input) {
    constexpr std::size_t variants = 8;
    constexpr int changedBytes = 3;
    std::minstd_rand random(1);
    for (std::size_t i = 1; i < variants && !input.empty(); ++i) {
        give({input.begin(), input.begin() + static_cast<std::ptrdiff_t>(input.size() * i / variants)});
        Input changed = input;
        for (int byte = 0; byte < changedBytes; ++byte)
            changed[random() % changed.size()] = static_cast<char>(random());
        give(changed);
    }
}

} // namespace

int main(int argc, char** argv) {
    const bool damages = argc == 3 && std::string_view(argv[1]) == "--damaged";
    if (argc != 2 && !damages) {
        std::fputs("name one folder\n", stderr);
        return 2;
    }
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[argc - 1])) {
        std::printf("%s\n", entry.path().c_str());
        std::fflush(stdout);
        const std::optional<Input> input = inputIn(entry.path());
        if (!input) {
            std::fputs("cannot read this file\n", stderr);
            return 1;
        }
        give(*input);
        if (damages)
            giveDamaged(*input);
        ++count;
    }
    if (count == 0)
        std::fputs("this folder holds no inputs\n", stderr);
    return count == 0 ? 1 : 0;
}
