// Fields as numbers: plain numbers beside the general readers of a double, and
// fields with units and operators beside libraries for units and expressions.

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "units/strtodou.h"
#include "vaskel/units.h"

#if VASKEL_BENCH_FAST_FLOAT
#include <fast_float/fast_float.h>
#endif
#if VASKEL_BENCH_UDUNITS
#include <udunits2.h>
#endif
#if VASKEL_BENCH_MUPARSER
#include <muParser.h>
#endif
#if VASKEL_BENCH_QALCULATE
#include <libqalculate/qalculate.h>
#endif

namespace {

constexpr std::size_t kCount = 1024;

// Numbers as they are typed, with digits decimals behind up to four digits.
std::vector<std::string> numbers(int decimals) {
    std::mt19937 random(1);
    std::vector<std::string> all(kCount);
    for (std::string& text : all) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.*f", decimals,
                      static_cast<double>(random()) / 4294967296.0 * (random() % 2 ? 9999 : 99));
        text = buffer;
        if (random() % 4 == 0) text.insert(text.begin(), '-');
    }
    return all;
}

template <class Read>
void run(benchmark::State& state, const std::vector<std::string>& all, Read read) {
    std::vector<std::string> texts(kCount);
    for (std::size_t i = 0; i < kCount; ++i) texts[i] = all[i % all.size()];
    std::size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(read(texts[i++ % kCount]));
}

template <class Read>
void add(const std::string& name, const std::vector<std::string>& all, Read read) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) { run(state, all, read); });
}

void addOurs(const std::string& name, const std::vector<std::string>& all,
             const Vaskel::FieldForm* form) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        Vaskel::forceFieldForm(form);
        run(state, all, [](const std::string& text) {
            double value = 0;
            Vaskel::strtodou(text.c_str(), &value);
            return value;
        });
        Vaskel::forceFieldForm(nullptr);
    });
}

void registerNumbers() {
    for (int decimals : {0, 2, 10}) {
        const std::vector<std::string> all = numbers(decimals);
        const auto name = [&](const char* who) {
            return std::string("strtodou/") + who + "/" + std::to_string(decimals);
        };
        addOurs(name("vaskel"), all, nullptr);
        for (const Vaskel::FieldForm& form : Vaskel::fieldForms())
            addOurs(name((std::string("vaskel_") + form.name).c_str()), all, &form);
        add(name("vaskel_plain_scan"), all, [](const std::string& text) {
            const char* cursor = text.c_str();
            return Vaskel::scanNumberPlain(&cursor);
        });
        add(name("strtod"), all,
            [](const std::string& text) { return std::strtod(text.c_str(), nullptr); });
        // These two need the length, which a field's text does not come with.
        add(name("from_chars"), all, [](const std::string& text) {
            double value = 0;
            const char* s = text.c_str();
            std::from_chars(s, s + std::strlen(s), value);
            return value;
        });
#if VASKEL_BENCH_FAST_FLOAT
        add(name("fast_float"), all, [](const std::string& text) {
            double value = 0;
            const char* s = text.c_str();
            fast_float::from_chars(s, s + std::strlen(s), value);
            return value;
        });
        add(name("fast_float_length_known"), all, [](const std::string& text) {
            double value = 0;
            fast_float::from_chars(text.data(), text.data() + text.size(), value);
            return value;
        });
#endif
    }
}

// Fields in mm, the current unit; what each peer reads is its own way to say
// the same.
void registerFields() {
    const std::vector<std::string> lengths = {"12.5cm", "1inch", "210mm", "72pt", "0.25inch"};
    const std::vector<std::string> sums = {"10+2.5*3", "210/2-5", "12.5+0.25", "3*70"};
    add("field_with_unit/vaskel", lengths, [](const std::string& text) {
        double value = 0;
        Vaskel::strtodouuni(text.c_str(), &value, false, false);
        return value;
    });
    add("field_sum/vaskel", sums, [](const std::string& text) {
        double value = 0;
        Vaskel::strtodouuni(text.c_str(), &value, false, false);
        return value;
    });
#if VASKEL_BENCH_UDUNITS
    add("field_with_unit/udunits", lengths, [](const std::string& text) {
        static ut_system* const system = [] {
            ut_set_error_message_handler(ut_ignore);
            return ut_read_xml(nullptr);
        }();
        static ut_unit* const mm = ut_parse(system, "mm", UT_ASCII);
        ut_unit* const unit = ut_parse(system, text.c_str(), UT_ASCII);
        cv_converter* const converter = unit ? ut_get_converter(unit, mm) : nullptr;
        const double value = converter ? cv_convert_double(converter, 1.0) : 0;
        cv_free(converter);
        ut_free(unit);
        return value;
    });
#endif
#if VASKEL_BENCH_MUPARSER
    const auto evaluate = [](const std::string& text) {
        static mu::Parser* const parser = [] {
            auto* const made = new mu::Parser;
            made->DefinePostfixOprt("inch", [](double v) { return v * 25.4; });
            made->DefinePostfixOprt("mm", [](double v) { return v; });
            made->DefinePostfixOprt("cm", [](double v) { return v * 10; });
            made->DefinePostfixOprt("pt", [](double v) { return v * 25.4 / 72; });
            return made;
        }();
        parser->SetExpr(text);
        return parser->Eval();
    };
    add("field_with_unit/muparser", lengths, evaluate);
    add("field_sum/muparser", sums, evaluate);
#endif
#if VASKEL_BENCH_QALCULATE
    const auto calculate = [](const std::string& text) {
        static Calculator* const calculator = [] {
            auto* const made = new Calculator;
            made->loadGlobalDefinitions();
            return made;
        }();
        return calculator->calculate(text).number().floatValue();
    };
    add("field_with_unit/qalculate", lengths, calculate);
    add("field_sum/qalculate", sums, calculate);
#endif
}

}  // namespace

int main(int argc, char** argv) {
    registerNumbers();
    registerFields();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
