// replay FOLDER: feeds a fuzz target with each file of a corpus and with mutations of them, the same in each
// run.
#include "fuzzsupport.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace {

constexpr int MutationsPerFile = 3000;
constexpr int MostChanges = 6;
using Input = std::vector<uint8_t>;

std::vector<Input> readCorpus(const char *folder)
{
    std::vector<std::filesystem::path> paths;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        paths.push_back(entry.path());
    std::ranges::sort(paths);
    std::vector<Input> corpus;
    for (const auto &path : paths) {
        std::ifstream file(path, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return corpus;
}

class Mutator
{
public:
    explicit Mutator(const std::vector<Input> &corpus) : m_corpus(corpus) {}

    Input mutate(Input input)
    {
        for (size_t changes = 1 + below(MostChanges); changes > 0; --changes)
            change(input);
        return input;
    }

private:
    size_t below(size_t limit) { return limit ? m_random() % limit : 0; }
    uint8_t byte() { return static_cast<uint8_t>(m_random()); }

    void change(Input &input)
    {
        const size_t place = below(input.size() + 1);
        const auto at = input.begin() + static_cast<std::ptrdiff_t>(place);
        switch (below(5)) {
        case 0:
            input.resize(place);
            break;
        case 1:
            input.insert(at, byte());
            break;
        case 2:
            if (at != input.end())
                *at ^= static_cast<uint8_t>(1u << below(8));
            break;
        case 3:
            if (at != input.end())
                *at = byte();
            break;
        default:
            appendOf(m_corpus[below(m_corpus.size())], input);
        }
    }

    void appendOf(const Input &other, Input &input)
    {
        input.insert(input.end(), other.begin() + static_cast<std::ptrdiff_t>(below(other.size() + 1)),
                     other.end());
    }

    const std::vector<Input> &m_corpus;
    std::mt19937 m_random{20260101};
};

void feed(const Input &input)
{
    const Input exact(input.begin(),
                      input.end()); // no spare room behind it, so that a sanitizer sees an over-read
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<Input> corpus = argc == 2 ? readCorpus(argv[1]) : std::vector<Input>();
    if (corpus.empty()) {
        std::fputs("usage: replay FOLDER (with a corpus in it)\n", stderr);
        return 2;
    }
    feed({});
    Mutator mutator(corpus);
    for (const Input &input : corpus) {
        feed(input);
        for (int i = 0; i < MutationsPerFile; ++i)
            feed(mutator.mutate(input));
    }
    std::printf("%zu files, %d mutations of each\n", corpus.size(), MutationsPerFile);
    return 0;
}
