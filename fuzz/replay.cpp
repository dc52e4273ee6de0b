// Runs a target without libFuzzer: on every file of a corpus, then on copies of them that are
// damaged at random, always the same ones, so that a run that fails fails again.
// Usage: fuzz_replay TARGET DIRECTORY [NUMBER OF DAMAGED COPIES]
//        fuzz_replay TARGET FILE
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "harness.h"

#if defined(__SANITIZE_ADDRESS__)
extern "C" void __sanitizer_set_death_callback(void (*callback)());
#endif

namespace pelvan::fuzz {
namespace {

constexpr std::size_t kLongest = 4096;
std::string present;        // the bytes that are run
std::string kept_in;        // where they go when they fail
std::mt19937 generator(20); // the seed means nothing

std::size_t below(std::size_t limit) {
    return limit == 0 ? 0 : generator() % limit;
}

void keep_present() {
    std::ofstream(kept_in, std::ios::binary) << present;
    std::fprintf(stderr, "The input is kept in %s\n", kept_in.c_str());
}

void damage(std::string& bytes, const std::vector<std::string>& corpus) {
    constexpr std::string_view kTelling("\x00\x01\x7F\x80\xFF\r\n =,;{}-.09", 18);
    const std::size_t at = below(bytes.size() + 1);
    const std::size_t length = below(bytes.size() - at + 1);
    const std::string& other = corpus[below(corpus.size())];
    switch (below(6)) {
    case 0:
        if (at < bytes.size()) bytes[at] = static_cast<char>(bytes[at] ^ 1 << below(8));
        break;
    case 1:
        if (at < bytes.size()) bytes[at] = static_cast<char>(generator());
        break;
    case 2:
        bytes.insert(at, 1, kTelling[below(kTelling.size())]);
        break;
    case 3:
        bytes.erase(at, below(length + 1));
        break;
    case 4:
        bytes.insert(below(bytes.size() + 1), bytes.substr(at, length));
        break;
    default:
        bytes = bytes.substr(0, at) + other.substr(below(other.size() + 1));
    }
    bytes.resize(std::min(bytes.size(), kLongest));
}

std::string read(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<std::string> corpus_of(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path)) return {read(path)};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<std::string> corpus;
    for (const auto& file : files)
        corpus.push_back(read(file));
    return corpus;
}

void run(const Target& target, const std::string& bytes) {
    present = bytes;
    const Exact copy(bytes);
    Input input(copy.view());
    target.run(input);
}

int replay(const Target& target, const std::filesystem::path& path, long copies) {
    kept_in = (std::filesystem::current_path() / (std::string("failed-") + target.name)).string();
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_set_death_callback(keep_present);
#endif
    std::signal(SIGABRT, [](int) { keep_present(); });
    const std::vector<std::string> corpus = corpus_of(path);
    if (corpus.empty()) {
        std::fprintf(stderr, "%s has no corpus\n", target.name);
        return 1;
    }
    for (const std::string& bytes : corpus)
        run(target, bytes);
    for (long i = 0; i < copies; ++i) {
        std::string bytes = corpus[below(corpus.size())];
        for (std::size_t n = below(4) + 1; n > 0; --n)
            damage(bytes, corpus);
        run(target, bytes);
    }
    std::printf("%s: %zu kept inputs and %ld damaged ones\n", target.name, corpus.size(), copies);
    return 0;
}

} // namespace
} // namespace pelvan::fuzz

int main(int argc, char** argv) {
    const std::string name = argc > 2 ? argv[1] : "";
    for (const pelvan::fuzz::Target* target : pelvan::fuzz::Target::all())
        if (target->name == name)
            return pelvan::fuzz::replay(*target, argv[2], argc > 3 ? std::atol(argv[3]) : 0);
    std::fprintf(stderr, "Usage: fuzz_replay TARGET DIRECTORY|FILE [COPIES]; the targets:");
    for (const pelvan::fuzz::Target* target : pelvan::fuzz::Target::all())
        std::fprintf(stderr, " %s", target->name);
    std::fputs("\n", stderr);
    return 2;
}
