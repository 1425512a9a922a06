// Questions of a batch: what one costs that a block suppresses, what looking its
// answer up costs, and what opening and closing a block costs, with many blocks
// and keys known; beside the standard library's hash tables doing the lookups
// alone.

#include <benchmark/benchmark.h>

#include <cstdarg>
#include <string>
#include <unordered_map>
#include <vector>

#include "vaskel/messages.h"

namespace {

using namespace Vaskel;

struct Yes : MessageAskHandler {
    int AskMessage(const char*, const char*, const char*, const char*, va_list) override {
        return 1;
    }
};

std::vector<std::string> keysOf(int count) {
    std::vector<std::string> keys;
    for (int i = 0; i < count; ++i) keys.push_back("overwrite output " + std::to_string(i));
    return keys;
}

// As many blocks, each with an answer of its own, all open.
struct Batch {
    explicit Batch(int count) : keys(keysOf(count)) {
        SetMessageAskHandler(&yes);
        MessageBlocks& blocks = *MessageBlocks::Instance();
        static const MessageBlocks empty(blocks);
        blocks = empty;  // what an earlier run left
        for (int i = 0; i < count; ++i) {
            blocks.ActivateBlock(i);
            blocks.MessageAsk(i, keys[static_cast<std::size_t>(i)].c_str(), "1", "2", "3");
        }
    }
    ~Batch() { SetMessageAskHandler(nullptr); }
    Yes yes;
    std::vector<std::string> keys;
};

void askSuppressed(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const Batch batch(count);
    int i = 0;
    for (auto _ : state) {
        i = (i + 7919) % count;
        MessageBlocks::Instance()->MessageAsk(i, batch.keys[static_cast<std::size_t>(i)].c_str(),
                                              "Replace?", "Yes", "No");
    }
}

void lookUp(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const Batch batch(count);
    int i = 0;
    for (auto _ : state) {
        i = (i + 7919) % count;
        benchmark::DoNotOptimize(MessageBlocks::Instance()->GetMessageAnswer(
            i, batch.keys[static_cast<std::size_t>(i)].c_str()));
    }
}

void lookUpHashed(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const std::vector<std::string> keys = keysOf(count);
    std::unordered_map<int, bool> active, asked;
    std::unordered_map<std::string, int> answers;
    for (int i = 0; i < count; ++i) {
        active[i] = asked[i] = true;
        answers[keys[static_cast<std::size_t>(i)]] = 1;
    }
    int i = 0;
    for (auto _ : state) {
        i = (i + 7919) % count;
        const char* const key = keys[static_cast<std::size_t>(i)].c_str();
        int answer = -1;
        if (active.find(i)->second && asked.find(i)->second) answer = answers.find(key)->second;
        benchmark::DoNotOptimize(answer);
    }
}

void openAskClose(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const Batch batch(count);
    int i = 0;
    for (auto _ : state) {
        i = (i + 7919) % count;
        const MessageBlockDelimiter block(i);
        MessageBlocks::Instance()->MessageAsk(i, batch.keys[static_cast<std::size_t>(i)].c_str(),
                                              "Replace?", "Yes", "No");
    }
}

void registerAll() {
    const auto sized = [](auto* bench) { bench->RangeMultiplier(100)->Range(1, 10000); };
    sized(benchmark::RegisterBenchmark("suppressed_question/vaskel", askSuppressed));
    sized(benchmark::RegisterBenchmark("answer/vaskel", lookUp));
    sized(benchmark::RegisterBenchmark("answer/std_unordered_map", lookUpHashed));
    sized(benchmark::RegisterBenchmark("block_with_question/vaskel", openAskClose));
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
}
