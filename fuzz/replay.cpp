// Runs every file of the folders given, and mutations of each, through the target: fuzz_NAME FOLDER...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int MutationsOfEach = 400;

std::string Mutate(std::string text, std::mt19937& random, const std::vector<std::string>& corpus)
{
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (auto changes = 1 + below(4); changes != 0; --changes) {
        const std::size_t place = below(text.size() + 1);
        switch (below(5)) {
            case 0:
                text.insert(place, 1, static_cast<char>(below(256)));
                break;
            case 1:
                if (place < text.size()) text[place] = static_cast<char>(text[place] ^ (1 << below(8)));
                break;
            case 2:
                text.erase(place, below(8));
                break;
            case 3:
                text.insert(place, text.substr(below(text.size() + 1), below(32)));
                break;
            default:
                text = text.substr(0, place) + corpus[below(corpus.size())].substr(0, below(64));
        }
    }
    return text;
}

void Run(const std::string& text)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> corpus;
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> files(std::filesystem::directory_iterator(argv[i]), {});
        std::sort(files.begin(), files.end());
        for (const auto& file : files) {
            std::ifstream stream(file, std::ios::binary);
            corpus.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
        }
    }
    if (corpus.empty()) {
        std::fprintf(stderr, "%s: no corpus\n", argv[0]);
        return 1;
    }
    std::mt19937 random(1);
    for (const std::string& text : corpus) {
        Run(text);
        for (int i = 0; i < MutationsOfEach; ++i)
            Run(Mutate(text, random, corpus));
    }
    std::printf("%zu texts, %zu mutations\n", corpus.size(), corpus.size() * MutationsOfEach);
}
