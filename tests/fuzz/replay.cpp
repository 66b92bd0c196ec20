// The fuzz targets without a fuzzer: the corpus, and a fixed number of mutations of it. KIV_FUZZ_RUNS sets
// the number of mutations a target.
#include "tests/fuzz/fuzz_targets.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace fs = std::filesystem;

namespace {

using bytes = std::vector<uint8_t>;

struct target {
    const char *name;
    int (*run)(const uint8_t *, size_t);
};

const target targets[] = {
    {"tape", fuzz_tape},     {"dump", fuzz_dump},       {"settings", fuzz_settings},
    {"bitmap", fuzz_bitmap}, {"program", fuzz_program}, {"snapshot", fuzz_snapshot},
    {"wire", fuzz_wire},
};

std::vector<bytes> corpus_of(const char *name) {
    std::vector<fs::path> files;
    const fs::path folder = fs::path(KIV_SOURCE_DIR) / "tests/fuzz/corpus" / name;
    for (const auto &entry : fs::directory_iterator(folder)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<bytes> corpus;
    for (const fs::path &file : files) {
        const std::string text = get_file(file);
        corpus.emplace_back(text.begin(), text.end());
    }
    return corpus;
}

void mutate(bytes &input, std::mt19937 &random) {
    for (uint32_t change = random() % 8 + 1; change > 0; --change) {
        const size_t at = input.empty() ? 0 : random() % input.size();
        switch (random() % 5) {
        case 0:
            if (!input.empty()) input[at] = static_cast<uint8_t>(random());
            break;
        case 1:
            if (!input.empty()) input[at] = static_cast<uint8_t>(input[at] ^ (1u << random() % 8));
            break;
        case 2:
            input.insert(input.begin() + static_cast<ptrdiff_t>(at), static_cast<uint8_t>(random()));
            break;
        case 3: input.resize(at); break;
        default:
            for (size_t n = random() % 64; n > 0; --n) input.push_back(static_cast<uint8_t>(random()));
        }
    }
}

class Fuzz : public testing::TestWithParam<target> {};

TEST_P(Fuzz, CorpusAndMutations) {
    const target &t = GetParam();
    const std::vector<bytes> corpus = corpus_of(t.name);
    ASSERT_FALSE(corpus.empty());
    for (const bytes &input : corpus) t.run(input.data(), input.size());
    const char *runs = std::getenv("KIV_FUZZ_RUNS");
    std::mt19937 random(8801);
    for (int i = runs != nullptr ? std::atoi(runs) : 200; i > 0; --i) {
        bytes input = corpus[random() % corpus.size()];
        mutate(input, random);
        t.run(input.data(), input.size());
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, Fuzz, testing::ValuesIn(targets),
                         [](const auto &instance) { return std::string(instance.param.name); });

} // namespace
