// Big integers beside GMP and Boost.Multiprecision, by the number of digits of
// 16 bits. Everyone works in place on numbers that have their memory already;
// where a number has to be reset, everyone copies it.
//
// The quotients are those of our rule; the peers make true ones. Each negative
// result on the way is a line to the host, formatted by the embedded platform,
// which takes longer than the digits do: "vaskel unheard" goes without.

#include <benchmark/benchmark.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "embedded/host.h"
#include "encoding/bigint_digits.h"
#include "encoding/bigint_divide.h"
#include "tests/encoding/bigint_support.h"
#include "vaskel/encoding.h"

#ifdef VASKEL_BENCH_GMP
#include <gmp.h>
#endif

namespace {

using boost::multiprecision::cpp_int;
using Vaskel::bigint;

constexpr unsigned kSeed = 20240701;

Digits randomRow(std::size_t length, unsigned seed, unsigned short top) {
    std::mt19937 random(kSeed + seed);
    Digits row(length);
    for (unsigned short& digit : row) digit = static_cast<unsigned short>(random());
    row.back() = top;
    return row;
}

// 65536^(length - 1)
Digits powerRow(std::size_t length) {
    Digits row(length);
    row.back() = 1;
    return row;
}

std::size_t size(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)); }

// ---- Numbers of everyone, with the same operations --------------------------

struct Ours {
    explicit Ours(const Digits& digits) : value(numberOf(digits)) {}
    Ours() = default;
    void set(const Ours& other) { value = other.value; }
    void add(const Ours& other) { value += other.value; }
    void subtract(const Ours& other) { value -= other.value; }
    void times(unsigned short factor) { value *= factor; }
    void product(const Ours& a, const Ours& b) { value = a.value * b.value; }
    static void divide(const Ours& a, const Ours& b, Ours& quotient, Ours& remainder) {
        a.value.divmod(b.value, quotient.value, remainder.value);
    }
    const void* data() const { return Vaskel::BigintAccess::digits(value); }
    bigint value;
};

struct Boost {
    explicit Boost(const Digits& digits) { import_bits(value, digits.rbegin(), digits.rend(), 16); }
    Boost() = default;
    void set(const Boost& other) { value = other.value; }
    void add(const Boost& other) { value += other.value; }
    void subtract(const Boost& other) { value -= other.value; }
    void times(unsigned short factor) { value *= factor; }
    void product(const Boost& a, const Boost& b) { value = a.value * b.value; }
    static void divide(const Boost& a, const Boost& b, Boost& quotient, Boost& remainder) {
        divide_qr(a.value, b.value, quotient.value, remainder.value);
    }
    const void* data() const { return value.backend().limbs(); }
    cpp_int value;
};

#ifdef VASKEL_BENCH_GMP
struct Gmp {
    explicit Gmp(const Digits& digits) : Gmp() {
        mpz_import(value, digits.size(), -1, sizeof digits[0], 0, 0, digits.data());
    }
    Gmp() { mpz_init(value); }
    ~Gmp() { mpz_clear(value); }
    Gmp(const Gmp&) = delete;
    Gmp& operator=(const Gmp&) = delete;
    void set(const Gmp& other) { mpz_set(value, other.value); }
    void add(const Gmp& other) { mpz_add(value, value, other.value); }
    void subtract(const Gmp& other) { mpz_sub(value, value, other.value); }
    void times(unsigned short factor) { mpz_mul_ui(value, value, factor); }
    void product(const Gmp& a, const Gmp& b) { mpz_mul(value, a.value, b.value); }
    static void divide(const Gmp& a, const Gmp& b, Gmp& quotient, Gmp& remainder) {
        mpz_tdiv_qr(quotient.value, remainder.value, a.value, b.value);
    }
    const void* data() const { return value[0]._mp_d; }
    mpz_t value;
};
#endif

// ---- Work -------------------------------------------------------------------

// So seldom is a number reset that its copy does not count.
constexpr int kTurns = 512;

template <class Number>
void add(benchmark::State& state) {
    const Number first(randomRow(size(state), 1, 40000)), other(randomRow(size(state), 2, 40));
    Number sum(randomRow(size(state), 1, 40000));
    int turn = 0;
    for (auto _ : state) {
        sum.add(other);
        benchmark::DoNotOptimize(sum.data());
        if (++turn % kTurns == 0) sum.set(first);
    }
}

template <class Number>
void subtract(benchmark::State& state) {
    const Number first(randomRow(size(state), 1, 40000)), other(randomRow(size(state), 2, 40));
    Number difference(randomRow(size(state), 1, 40000));
    int turn = 0;
    for (auto _ : state) {
        difference.subtract(other);
        benchmark::DoNotOptimize(difference.data());
        if (++turn % kTurns == 0) difference.set(first);
    }
}

// A copy with each, since products grow.
template <class Number>
void times(benchmark::State& state) {
    const Number first(randomRow(size(state), 1, 40000));
    Number product;
    for (auto _ : state) {
        product.set(first);
        product.times(54321);
        benchmark::DoNotOptimize(product.data());
    }
}

template <class Number>
void product(benchmark::State& state) {
    const Number a(randomRow(size(state), 1, 40000)), b(randomRow(size(state), 2, 50000));
    Number result;
    for (auto _ : state) {
        result.product(a, b);
        benchmark::DoNotOptimize(result.data());
    }
}

template <class Number>
void divide(benchmark::State& state, const Digits& dividend, const Digits& divisor) {
    const Number a(dividend), b(divisor);
    Number quotient, remainder;
    for (auto _ : state) {
        Number::divide(a, b, quotient, remainder);
        benchmark::DoNotOptimize(quotient.data());
    }
}

// Our rule on rows, without reports; divideRowsPlain is as plain as it comes in
// reasonable time.
template <auto kDivide>
void divideUnheard(benchmark::State& state, const Digits& dividend, const Digits& divisor) {
    Digits rest, quotient(dividend.size() - divisor.size() + 1);
    for (auto _ : state) {
        rest = dividend;
        rest.resize(dividend.size() + Vaskel::kDivideSpare);
        kDivide(divisor.data(), divisor.size(), rest.data(), dividend.size(), quotient.data(),
                [] {});
        benchmark::DoNotOptimize(quotient.data());
    }
}

struct Division {
    const char* name;
    Digits (*dividend)(std::size_t length);
    Digits (*divisor)(std::size_t length);
};

Digits tinyDigits(std::size_t length, unsigned seed, unsigned most) {
    Digits row = randomRow(length, seed, 1);
    for (unsigned short& digit : row) digit = static_cast<unsigned short>(digit % (most + 1));
    row.back() = static_cast<unsigned short>(1 + row.back() % most);
    return row;
}

const Division kDivisions[] = {
    {"divmod 2n by n", [](std::size_t n) { return randomRow(2 * n, 1, 40000); },
     [](std::size_t n) { return randomRow(n, 2, 50000); }},
    {"divmod n by 4", [](std::size_t n) { return randomRow(n, 1, 40000); },
     [](std::size_t) { return randomRow(4, 2, 50000); }},
    {"divmod n by 9", [](std::size_t n) { return randomRow(n + 9, 1, 40000); },
     [](std::size_t) { return randomRow(9, 2, 50000); }},
    {"divmod power by 9", [](std::size_t n) { return powerRow(n + 9); },
     [](std::size_t) { return randomRow(9, 2, 3); }},
    // Corrected one divisor at a time, these would take ages.
    {"divmod power by 1", [](std::size_t n) { return powerRow(n); },
     [](std::size_t) { return Digits{1}; }},
    {"divmod power by n digits", [](std::size_t n) { return powerRow(2 * n); },
     [](std::size_t n) { return randomRow(n, 2, 1); }},
    {"divmod zeros by small tops", [](std::size_t n) { return tinyDigits(2 * n, 1, 1); },
     [](std::size_t n) { return tinyDigits(n, 2, 2); }},
    {"divmod 2n by n, top digit 3", [](std::size_t n) { return randomRow(2 * n, 1, 40000); },
     [](std::size_t n) { return randomRow(n, 2, 3); }},
    {"divmod 2n by n, top digit 300", [](std::size_t n) { return randomRow(2 * n, 1, 40000); },
     [](std::size_t n) { return randomRow(n, 2, 300); }},
};

void addSizes(benchmark::internal::Benchmark* registered, std::initializer_list<int> sizes) {
    for (const int size : sizes) registered->Arg(size);
}

using Run = void (*)(benchmark::State&);

void ringWork(const std::string& work, Run ours, Run gmp, Run boost,
              std::initializer_list<int> sizes) {
    for (const Vaskel::LimbLoops* loops : Vaskel::limbLoopForms())
        addSizes(benchmark::RegisterBenchmark((work + "/vaskel " + loops->name).c_str(),
                                              [=](benchmark::State& state) {
                                                  Vaskel::forceLimbLoops(loops);
                                                  ours(state);
                                                  Vaskel::forceLimbLoops(nullptr);
                                              }),
                 sizes);
    addSizes(benchmark::RegisterBenchmark((work + "/vaskel").c_str(), ours), sizes);
    if (gmp) addSizes(benchmark::RegisterBenchmark((work + "/gmp").c_str(), gmp), sizes);
    addSizes(benchmark::RegisterBenchmark((work + "/boost").c_str(), boost), sizes);
}

using RunDivision = void (*)(benchmark::State&, const Digits&, const Digits&);

void divisionWork(const Division& division, const char* who, RunDivision run,
                  std::initializer_list<int> sizes) {
    addSizes(benchmark::RegisterBenchmark((std::string(division.name) + "/" + who).c_str(),
                                          [&division, run](benchmark::State& state) {
                                              run(state, division.dividend(size(state)),
                                                  division.divisor(size(state)));
                                          }),
             sizes);
}

#ifdef VASKEL_BENCH_GMP
constexpr Run kGmp[] = {add<Gmp>, subtract<Gmp>, times<Gmp>, product<Gmp>};
#else
constexpr Run kGmp[4] = {};
#endif

}  // namespace

int main(int argc, char** argv) {
    Embedded::onDebugLine([](const char*) {});  // negative results are told there
    const auto sizes = {4, 16, 64, 256, 1024, 4096, 16384};
    ringWork("add", add<Ours>, kGmp[0], add<Boost>, sizes);
    ringWork("subtract", subtract<Ours>, kGmp[1], subtract<Boost>, sizes);
    ringWork("times 16 bits", times<Ours>, kGmp[2], times<Boost>, sizes);
    ringWork("product", product<Ours>, kGmp[3], product<Boost>, sizes);
    for (const Division& division : kDivisions) {
        divisionWork(division, "vaskel", divide<Ours>, sizes);
        divisionWork(division, "vaskel unheard", divideUnheard<Vaskel::divideRows>, sizes);
        divisionWork(division, "vaskel digit by digit", divideUnheard<Vaskel::divideRowsPlain>,
                     {4, 16, 64, 256, 1024});
        divisionWork(division, "boost", divide<Boost>, sizes);
#ifdef VASKEL_BENCH_GMP
        divisionWork(division, "gmp", divide<Gmp>, sizes);
#endif
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
