// Distances as text of a field: ours beside the general ways to write a double
// with so many decimals. The peers get the converted value and write no
// blanks, which is less than distostr does.

#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "units/doutostr.h"
#include "vaskel/units.h"

#if VASKEL_BENCH_DOUBLE_CONVERSION
#include <double-conversion/double-conversion.h>
#endif
#if VASKEL_BENCH_FMT
#include <fmt/compile.h>
#endif

namespace {

constexpr std::size_t kCount = 4096;

// Lengths as they stand in a document: of any size up to the widest, many of
// them round in the unit.
std::vector<int> distances(int unit) {
    std::mt19937 random(1);
    Vaskel::setuni(unit);
    std::vector<int> all(kCount);
    for (int& d : all) {
        const double limit = Vaskel::doutodis(unit == 0 ? 99 : 9999);
        const double share = static_cast<double>(random() % 10000) / 10000;
        d = static_cast<int>(limit * share * share);
        if (random() % 2)
            d = static_cast<int>(Vaskel::doutodis(static_cast<int>(Vaskel::distodou(d))));
        if (random() % 4 == 0) d = -d;
    }
    return all;
}

struct Work {
    const char* name;
    int unit;
    int decimals;
};
constexpr Work kWorks[] = {{"distostr_mm", 1, 2}, {"distostr_inch", 0, 4}};

// write(distance, buffer) once an iteration.
template <class Write>
void run(benchmark::State& state, const Work& work, Write write) {
    const std::vector<int> all = distances(work.unit);
    char text[64];
    std::size_t i = 0;
    for (auto _ : state) {
        write(all[i++ % kCount], text);
        benchmark::DoNotOptimize(&text[0]);
        benchmark::ClobberMemory();
    }
}

template <class Write>
void add(const Work& work, const std::string& who, Write write) {
    benchmark::RegisterBenchmark((std::string(work.name) + "/" + who).c_str(),
                                 [=](benchmark::State& state) { run(state, work, write); });
}

void addOurs(const Work& work, const std::string& who, const Vaskel::NumberForm* form) {
    benchmark::RegisterBenchmark(
        (std::string(work.name) + "/" + who).c_str(), [=](benchmark::State& state) {
            Vaskel::forceNumberForm(form);
            run(state, work, [](int d, char* text) { Vaskel::distostr(&d, text); });
            Vaskel::forceNumberForm(nullptr);
        });
}

// The number that a text says: the host's resolution, the rule's two operations,
// scaling and rounding.
std::uint32_t numberOf(int d, int decimals) {
    static constexpr int kPowers[] = {1, 10, 100, 1000, 10000};
    const double scaled = kPowers[decimals] * Vaskel::distodou(d);
    return static_cast<std::uint32_t>(std::abs(scaled) + 0.5);
}

void storePair(char* text, std::uint32_t pair) {
    static constexpr auto pairs = [] {
        std::array<char, 200> made{};
        for (std::size_t i = 0; i < 100; ++i) {
            made[2 * i] = static_cast<char>('0' + i / 10);
            made[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
        return made;
    }();
    std::memcpy(text, &pairs[2 * pair], 2);
}

void registerAll() {
    for (const Work& work : kWorks) {
        const int decimals = work.decimals;
        addOurs(work, "vaskel", nullptr);
        for (const Vaskel::NumberForm& form : Vaskel::numberForms())
            addOurs(work, std::string("vaskel_") + form.name, &form);
        add(work, "least_number", [=](int d, char* text) {
            const std::uint32_t number = numberOf(d, decimals);
            std::memcpy(text, &number, sizeof number);
        });
        // The number and its six digits: no blanks, sign, point, end.
        add(work, "least_digits", [=](int d, char* text) {
            const std::uint32_t number = numberOf(d, decimals);
            storePair(text, number / 10000);
            storePair(text + 2, number / 100 - number / 10000 * 100);
            storePair(text + 4, number - number / 100 * 100);
        });
        add(work, "snprintf", [=](int d, char* text) {
            std::snprintf(text, 64, "%+.*f", decimals, Vaskel::distodou(d));
        });
        add(work, "to_chars", [=](int d, char* text) {
            *std::to_chars(text, text + 63, Vaskel::distodou(d), std::chars_format::fixed, decimals)
                 .ptr = '\0';
        });
#if VASKEL_BENCH_FMT
        add(work, "fmt", [=](int d, char* text) {
            const double value = Vaskel::distodou(d);
            *(decimals == 2 ? fmt::format_to(text, FMT_COMPILE("{:+.2f}"), value)
                            : fmt::format_to(text, FMT_COMPILE("{:+.4f}"), value)) = '\0';
        });
#endif
#if VASKEL_BENCH_DOUBLE_CONVERSION
        add(work, "double_conversion", [=](int d, char* text) {
            using namespace double_conversion;
            StringBuilder builder(text, 64);
            DoubleToStringConverter::EcmaScriptConverter().ToFixed(Vaskel::distodou(d), decimals,
                                                                   &builder);
            builder.Finalize();
        });
#endif
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
