// Drives a target where no libFuzzer does, by some of its options:
//   fuzz_NAME [-runs=N] [-max_total_time=SECONDS] [-seed=N] [-artifact_prefix=PATH] FOLDER...
// Runs every file of the folders and N mutations of each from a fixed seed; with a time, mutations for so
// long, from seeds that grow, and keeps for further ones what reaches code that nothing reached before, where
// the build tells (-fsanitize-coverage=trace-pc). The target runs in a child; a text that ends it, or that
// takes too long, is cut down and written to PATHcrash-HASH.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Clock = std::chrono::steady_clock;
using Random = std::mt19937;
using Corpus = std::vector<std::string>;
using namespace std::chrono_literals;

constexpr auto Patience = 120s;  // for one text, under a sanitizer and beside other work
constexpr int MostFound = 5;     // then the rest is mostly the same

struct Options
{
    long runs = 400;
    long seconds = 0;
    unsigned int seed = 1;
    std::string prefix;
    std::vector<std::string> folders;
};

// What the child runs, told before it runs.
struct Shared
{
    std::atomic<unsigned long long> runs;
    std::size_t size;
    char text[1 << 20];
};
Shared* shared;

// Places of the code that were reached, by their addresses; of the child.
unsigned char reached[1 << 16];
unsigned int fresh;

bool TakesOption(const std::string& argument, const char* name, std::string& value)
{
    const std::string start = std::string("-") + name + "=";
    if (!argument.starts_with(start)) return false;
    value = argument.substr(start.size());
    return true;
}

Options ReadOptions(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        std::string value;
        if (TakesOption(argument, "runs", value)) options.runs = std::stol(value);
        if (TakesOption(argument, "max_total_time", value)) options.seconds = std::stol(value);
        if (TakesOption(argument, "seed", value)) options.seed = static_cast<unsigned int>(std::stoul(value));
        if (TakesOption(argument, "artifact_prefix", value)) options.prefix = value;
        if (!argument.starts_with('-')) options.folders.push_back(argument);
    }
    return options;
}

Corpus ReadCorpus(const std::vector<std::string>& folders)
{
    Corpus corpus;
    for (const std::string& folder : folders) {
        if (!std::filesystem::is_directory(folder)) continue;
        std::vector<std::filesystem::path> files(std::filesystem::directory_iterator(folder), {});
        std::sort(files.begin(), files.end());
        for (const auto& file : files) {
            std::ifstream stream(file, std::ios::binary);
            corpus.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
        }
    }
    return corpus;
}

// One number in the text, from a place on, becomes another.
void ChangeNumber(std::string& text, std::size_t place, const char* number)
{
    constexpr const char* digits = "0123456789";
    const std::size_t begin = text.find_first_of(digits, place);
    if (begin == text.npos) return;
    text.replace(begin, std::min(text.find_first_not_of(digits, begin), text.size()) - begin, number);
}

// The line at the place goes, or comes once more at another one.
void MoveLine(std::string& text, std::size_t place, std::size_t to)
{
    const std::size_t begin = text.rfind('\n', place) + 1;
    const std::size_t size = std::min(text.find('\n', place), text.size() - 1) + 1 - begin;
    if (to % 2 == 0)
        text.erase(begin, size);
    else
        text.insert(text.rfind('\n', to) + 1, text.substr(begin, size));
}

std::string Mutate(std::string text, Random& random, const Corpus& corpus)
{
    constexpr const char* numbers[] = {"0",     "1",   "-1", "0.5", "4294967295", "9223372036854775807",
                                       "1e308", "nan", ""};
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (auto changes = 1 + below(4); changes != 0; --changes) {
        const std::size_t place = below(text.size() + 1);
        switch (below(7)) {
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
            case 4:
                ChangeNumber(text, place, numbers[below(std::size(numbers))]);
                break;
            case 5:
                if (place < text.size()) MoveLine(text, place, below(text.size()));
                break;
            default:
                text = text.substr(0, place) + corpus[below(corpus.size())].substr(0, below(64));
        }
    }
    return text;
}

void Run(const std::string& text)
{
    shared->size = std::min(text.size(), sizeof shared->text);
    std::memcpy(shared->text, text.data(), shared->size);
    ++shared->runs;
    // A copy of its own, so that a read past its end is seen.
    const std::vector<std::uint8_t> bytes(shared->text, shared->text + shared->size);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

void RunFixed(const Options& options, const Corpus& corpus)
{
    Random random(options.seed);
    for (const std::string& text : corpus) {
        Run(text);
        for (long i = 0; i < options.runs; ++i)
            Run(Mutate(text, random, corpus));
    }
}

void RunUntil(Clock::time_point end, unsigned int seed, Corpus corpus)
{
    Random random(seed);
    for (const std::string& text : corpus)
        Run(text);
    while (Clock::now() < end) {
        fresh = 0;
        std::string text = Mutate(corpus[random() % corpus.size()], random, corpus);
        Run(text);
        if (fresh != 0) corpus.push_back(std::move(text));
    }
}

// Whether it came to its end.
bool RunInChild(const std::function<void()>& run, bool isQuiet = false)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        if (isQuiet && (std::freopen("/dev/null", "w", stderr) == nullptr)) _exit(1);
        run();
        std::exit(0);  // where leaks are looked for
    }
    unsigned long long seen = shared->runs;
    Clock::time_point since = Clock::now();
    for (int status = 0;; std::this_thread::sleep_for(isQuiet ? 1ms : 20ms)) {
        if (waitpid(child, &status, WNOHANG) == child) return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        if (shared->runs != seen) {
            seen = shared->runs;
            since = Clock::now();
        } else if (Clock::now() - since > Patience) {
            std::fprintf(stderr, "no end after %lld s\n", static_cast<long long>(Patience.count()));
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return false;
        }
    }
}

// Without what it does not need to fail.
std::string CutDown(std::string text, std::chrono::seconds limit)
{
    const Clock::time_point end = Clock::now() + limit;
    for (std::size_t piece = text.size() / 2; piece != 0; piece /= 2)
        for (std::size_t place = 0; place < text.size() && Clock::now() < end;) {
            const std::string shorter = std::string(text).erase(place, piece);
            if (RunInChild([&] { Run(shorter); }, true))
                place += piece;
            else
                text = shorter;
        }
    return text;
}

void Keep(const std::string& text, const std::string& prefix)
{
    char name[32];
    std::snprintf(name, sizeof name, "crash-%016zx", std::hash<std::string>()(text));
    std::ofstream(prefix + name, std::ios::binary) << text;
    std::fprintf(stderr, "the text of %zu bytes is in %s%s\n", text.size(), prefix.c_str(), name);
}

}  // namespace

// The compiler calls it at each branch of code that was built to.
extern "C" void __sanitizer_cov_trace_pc();
extern "C" __attribute__((no_sanitize("address", "undefined"), no_sanitize_coverage)) void
__sanitizer_cov_trace_pc()
{
    const auto place = reinterpret_cast<std::uintptr_t>(__builtin_return_address(0));
    unsigned char& mark = reached[(place ^ place >> 16) % sizeof reached];
    fresh += mark == 0;
    mark = 1;
}

int main(int argc, char** argv)
{
    Options options = ReadOptions(argc, argv);
    const Corpus corpus = ReadCorpus(options.folders);
    if (corpus.empty()) {
        std::fprintf(stderr, "%s: no corpus\n", argv[0]);
        return 1;
    }
    void* const memory =
        mmap(nullptr, sizeof *shared, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return 1;
    shared = static_cast<Shared*>(memory);
    const Clock::time_point end = Clock::now() + std::chrono::seconds(options.seconds);
    int found = 0;
    do {
        const bool isFine = RunInChild(
            [&] { options.seconds == 0 ? RunFixed(options, corpus) : RunUntil(end, options.seed, corpus); });
        if (isFine) continue;
        ++found;
        const std::string text(shared->text, shared->size);
        Keep(options.seconds == 0 ? text : CutDown(text, 60s), options.prefix);
        ++options.seed;
    } while (options.seconds != 0 && found < MostFound && Clock::now() < end);
    std::printf("%zu texts, %llu runs, %d of them failed\n", corpus.size(), shared->runs.load(), found);
    return found == 0 ? 0 : 1;
}
