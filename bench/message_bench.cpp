// A message with a text and a number: through each kind of handler, by number,
// and finished; beside the same with a width, which vsnprintf formats, vsnprintf
// of the text into a buffer, and loggers that drop what they format.

#include <benchmark/benchmark.h>

#if VASKEL_BENCH_SPDLOG
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#endif

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>

#include "vaskel/messages.h"

namespace {

using namespace Vaskel;

// A path that fills the message up to about the size wanted.
std::string pathOf(const benchmark::State& state) {
    return std::string(static_cast<std::size_t>(state.range(0)), 'p');
}

void takeText(const char* text, MessageSeverity, MessageVolatility) {
    benchmark::DoNotOptimize(text);
}

int formatted(char* text, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4), noinline));
int formatted(char* text, std::size_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int count = std::vsnprintf(text, size, format, arguments);
    va_end(arguments);
    return count;
}

void vsnprintfAlone(benchmark::State& state) {
    const std::string path = pathOf(state);
    char text[1025];
    int page = 0;
    for (auto _ : state) {
        formatted(text, sizeof text, "cannot read %s, page %d", path.c_str(), ++page & 1023);
        benchmark::DoNotOptimize(text);
    }
}

void reportTexts(benchmark::State& state) {
    setAdvancedMessageHandler(takeText);
    const std::string path = pathOf(state);
    int page = 0;
    for (auto _ : state)
        message(kMessageError, kMessageLasting, "cannot read %s, page %d", path.c_str(),
                ++page & 1023);
    setMessageHandler(boost::none);
}

// What the engine leaves to vsnprintf.
void reportByLibrary(benchmark::State& state) {
    setAdvancedMessageHandler(takeText);
    const std::string path = pathOf(state);
    int page = 0;
    for (auto _ : state)
        message(kMessageError, kMessageLasting, "cannot read %s, page %1d", path.c_str(),
                ++page & 1023);
    setMessageHandler(boost::none);
}

void reportErrors(benchmark::State& state) {
    setMessageHandler(MessageHandlerRetainer(
        MessageErrorHandler([](const std::shared_ptr<Orlune::Core::Error>& error) {
            benchmark::DoNotOptimize(error.get());
        })));
    const std::string path = pathOf(state);
    int page = 0;
    for (auto _ : state)
        message(kMessageError, kMessageLasting, "cannot read %s, page %d", path.c_str(),
                ++page & 1023);
    setMessageHandler(boost::none);
}

void reportToNobody(benchmark::State& state) {
    setMessageHandler(boost::none);
    const std::string path = pathOf(state);
    int page = 0;
    for (auto _ : state)
        message(kMessageError, kMessageLasting, "cannot read %s, page %d", path.c_str(),
                ++page & 1023);
}

void reportByNumber(benchmark::State& state) {
    struct Formats : MessageIDConvertor {
        std::string ConvertMessageID(long) override { return "cannot read %s, page %d"; }
    } formats;
    SetMessageIDConvertor(&formats);
    setAdvancedMessageHandler(takeText);
    const std::string path = pathOf(state);
    int page = 0;
    for (auto _ : state) message(kMessageError, kMessageLasting, 17L, path.c_str(), ++page & 1023);
    setMessageHandler(boost::none);
    SetMessageIDConvertor(nullptr);
}

void showFinished(benchmark::State& state) {
    setAdvancedMessageHandler(takeText);
    const std::string text = "cannot read " + pathOf(state) + ", page 12";
    for (auto _ : state) ShowInfoMessage(kMessageError, kMessageLasting, text);
    setMessageHandler(boost::none);
}

#if VASKEL_BENCH_SPDLOG
void logToNullSink(benchmark::State& state) {
    spdlog::logger logger("null", std::make_shared<spdlog::sinks::null_sink_st>());
    const std::string path = pathOf(state);
    int page = 0;
    for (auto _ : state) logger.error("cannot read {}, page {}", path, ++page & 1023);
}
#endif

void registerAll() {
    const auto sized = [](auto* bench) { bench->Arg(10)->Arg(100)->Arg(900); };
    sized(benchmark::RegisterBenchmark("message/vaskel", reportTexts));
    sized(benchmark::RegisterBenchmark("message/vaskel_with_width", reportByLibrary));
    sized(benchmark::RegisterBenchmark("message/vaskel_to_error_objects", reportErrors));
    sized(benchmark::RegisterBenchmark("message/vaskel_by_number", reportByNumber));
    sized(benchmark::RegisterBenchmark("message/vaskel_without_handler", reportToNobody));
    sized(benchmark::RegisterBenchmark("message/vsnprintf", vsnprintfAlone));
#if VASKEL_BENCH_SPDLOG
    sized(benchmark::RegisterBenchmark("message/spdlog_null_sink", logToNullSink));
#endif
    sized(benchmark::RegisterBenchmark("ShowInfoMessage/vaskel", showFinished));
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
}
