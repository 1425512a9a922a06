#include <doctest/doctest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "platform/orlune.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "util/random.h"
#include "vaskel/util.h"

using namespace Vaskel;

namespace {

constexpr int kSeeds[] = {0,        1,       42,      -1,      -2,         1234567,
                          -1234567, 1 << 27, 1 << 28, INT_MAX, -(1 << 28), INT_MIN};

// The generator written the long way: a signed seed is split at bit 14 with an
// arithmetic shift, and the words stand in a queue.
class Reference {
 public:
    explicit Reference(std::int64_t seed) {
        std::int64_t x = seed;
        for (int n = 1; n <= 23 + 31; ++n) {
            x = ((x & 16383) * 31415821 + 1 + (x >> 14) * 126042112) & 268435455;
            if (n >= 23) mWords.push_back(x);
        }
    }
    std::int64_t first() const { return mWords.front(); }
    std::int64_t word() {
        mWords.push_back((mWords.front() + mWords.back()) & 268435455);
        mWords.pop_front();
        return mWords.back();
    }
    std::int64_t top() { return word() >> 14; }

 private:
    std::deque<std::int64_t> mWords;  // the last 32
};

struct SeedRow {
    int seed;
    std::uint32_t firstWord;  // of the ring, before any draw
    std::uint32_t lastWord;
    int ints[8];  // nextInt(100)
};

constexpr SeedRow kRows[] = {
    {42, 139767157, 248718244, {44, 56, 68, 34, 48, 87, 85, 90}},
    {0, 118871651, 157844938, {3, 28, 98, 93, 93, 7, 83, 24}},
    {-1, 169504702, 40637521, {78, 58, 4, 95, 79, 31, 42, 25}},
    {1234567, 252765542, 166036121, {56, 68, 60, 90, 59, 19, 45, 60}},
    {INT_MIN, 118871651, 157844938, {3, 28, 98, 93, 93, 7, 83, 24}},  // 0 modulo 2^28
    {INT_MAX, 169504702, 40637521, {78, 58, 4, 95, 79, 31, 42, 25}},  // -1 modulo 2^28
};

// Calls check for each kind of draw, by number.
constexpr int kKinds = 6;
double draw(Random& random, int kind) {
    switch (kind) {
        case 0:
            return random.nextInt(1000);
        case 1:
            return random.nextDouble();
        case 2:
            return static_cast<double>(random.nextFloat());
        case 3:
            return random.nextBool();
        case 4:
            return random.nextByte();
        default:
            return random.nextShort();
    }
}

}  // namespace

TEST_CASE("a seed gives the numbers it always gave") {
    for (const SeedRow& row : kRows) {
        CAPTURE(row.seed);
        std::uint32_t ring[kRingSize];
        fillRingPlain(row.seed, ring);
        CHECK(ring[0] == row.firstWord);
        CHECK(ring[31] == row.lastWord);
        Random random(row.seed);
        for (int want : row.ints) CHECK(random.nextInt(100) == want);
    }

    // Seed 42: the words are 120049945, 152081931, 184644182 and 91565094.
    Random doubles(42), floats(42), bools(42), bytes(42), shorts(42);
    for (double want : {0.44720, 0.56653, 0.68781, 0.34106}) {
        CHECK(doubles.nextDouble() == want);
        CHECK(floats.nextFloat() == static_cast<float>(want));
    }
    for (bool want : {false, true, true, false, false, true, true, true})
        CHECK(bools.nextBool() == want);
    for (int want : {114, 145, 176, 87})
        CHECK(static_cast<unsigned char>(bytes.nextByte()) == want);
    for (int want : {29308, 37128, 45076, 22352}) CHECK(shorts.nextShort() == want);
}

TEST_CASE("every draw is the top of one word, in its own scale") {
    for (int seed : kSeeds) {
        CAPTURE(seed);
        Random random(seed);
        Reference reference(seed);
        for (int round = 0; round < 200; ++round) {
            const int n = round * round * 3;
            REQUIRE(random.nextInt(n) == reference.top() * n / 16384);
            REQUIRE(random.nextDouble() ==
                    static_cast<double>(reference.top() * 100001 / 16384) / 100000.0);
            REQUIRE(random.nextFloat() ==
                    static_cast<float>(static_cast<double>(reference.top() * 100001 / 16384) /
                                       100000.0));
            REQUIRE(random.nextBool() == (reference.top() >= 8192));
            REQUIRE(static_cast<unsigned char>(random.nextByte()) == reference.word() >> 20);
            REQUIRE(random.nextShort() == reference.top() * 4);
        }
    }
}

TEST_CASE("nextInt: every n uses up one word, large ones wrap, negative ones round down") {
    for (int n : {0, 1, 2, 131071, 131072, 131073, 1 << 20, INT_MAX, -1, -5, -131072, INT_MIN}) {
        CAPTURE(n);
        Random random(42);
        Reference reference(42);
        for (int round = 0; round < 100; ++round) {
            const std::int64_t top = reference.top();
            const auto product = static_cast<std::int32_t>(static_cast<std::uint32_t>(top * n));
            const int got = random.nextInt(n);
            REQUIRE(got == product >> 14);
            if (n == 0 || n == 1) REQUIRE(got == 0);
            if (n > 0 && n < 131072) REQUIRE((got >= 0 && got < n));
            if (n < 0 && n >= -131072) REQUIRE((got <= 0 && got >= n));
        }
        CHECK(random.nextInt(16384) == reference.top());
    }
}

TEST_CASE("draws stay within their bounds") {
    Random random(7);
    double largest = 0;
    for (int round = 0; round < 100000; ++round) {
        const double value = random.nextDouble();
        largest = value > largest ? value : largest;
        REQUIRE(value >= 0.0);
        REQUIRE(random.nextShort() % 4 == 0);
    }
    CHECK(largest == 0.99994);
    std::set<int> bytes;
    for (int round = 0; round < 10000; ++round) bytes.insert(random.nextByte());
    CHECK(bytes.size() == 256);
}

TEST_CASE("the ring: leaps and running sums give the words of single steps") {
    std::uint32_t x = 1;
    for (int round = 0; round < 20000; ++round) {
        x = x * 1664525 + 1013904223;
        const int seed =
            round < static_cast<int>(std::size(kSeeds)) ? kSeeds[round] : static_cast<int>(x);
        std::uint32_t plain[kRingSize], fast[kRingSize];
        fillRingPlain(seed, plain);
        firstRound(seed, fast);
        CAPTURE(seed);
        for (int later = 0; later < 3; ++later) {
            if (later > 0) nextRound(fast);
            nextRoundPlain(plain);
            REQUIRE(std::memcmp(plain, fast, sizeof plain) == 0);
        }
    }
}

TEST_CASE("a block of draws is the same draws one by one") {
    for (std::size_t before : {0u, 1u, 5u, 31u, 32u, 33u}) {
        for (std::size_t count : {0u, 1u, 2u, 31u, 32u, 33u, 63u, 64u, 65u, 1000u}) {
            CAPTURE(before);
            CAPTURE(count);
            Random single(99), block(99);
            for (std::size_t i = 0; i < before; ++i) CHECK(single.nextInt(9) == block.nextInt(9));

            for (int n : {1, 1000, -3, INT_MAX}) {
                GuardedBytes ints(count * sizeof(int));
                block.nextInts(n, reinterpret_cast<int*>(ints.data()), count);
                int wrong = 0;
                for (std::size_t i = 0; i < count; ++i) {
                    int got;
                    std::memcpy(&got, ints.data() + i * sizeof got, sizeof got);
                    wrong += got != single.nextInt(n);
                }
                CHECK(wrong == 0);
            }
            GuardedBytes doubles(count * sizeof(double));
            block.nextDoubles(reinterpret_cast<double*>(doubles.data()), count);
            GuardedBytes bytes(count);
            block.nextBytes(bytes.chars(), count);
            int wrong = 0;
            for (std::size_t i = 0; i < count; ++i) {
                double got;
                std::memcpy(&got, doubles.data() + i * sizeof got, sizeof got);
                wrong += got != single.nextDouble();
            }
            for (std::size_t i = 0; i < count; ++i) wrong += bytes.chars()[i] != single.nextByte();
            CHECK(wrong == 0);
            CHECK(single.nextInt(16384) == block.nextInt(16384));
        }
    }
    Random random(1);
    random.nextInts(10, nullptr, 0);
    random.nextDoubles(nullptr, 0);
    random.nextBytes(nullptr, 0);
    CHECK(random.nextInt(16384) == Random(1).nextInt(16384));
}

TEST_CASE("equal seeds give equal sequences of every kind, also through copies") {
    for (int kind = 0; kind < kKinds; ++kind) {
        CAPTURE(kind);
        Random a(5), b(5);
        for (int round = 0; round < 40; ++round) CHECK(draw(a, kind) == draw(b, kind));
        Random copied(a), assigned(1), moved(2);
        assigned = a;
        Random other(a);
        moved = std::move(other);
        for (int round = 0; round < 40; ++round) {
            const double want = draw(a, kind);
            CHECK(draw(copied, kind) == want);
            CHECK(draw(assigned, kind) == want);
            CHECK(draw(moved, kind) == want);
        }
        a.setSeed(5);
        Random fresh(5);
        for (int round = 0; round < 40; ++round) CHECK(draw(a, kind) == draw(fresh, kind));
    }

    // Copied at every place of the ring: before a draw, within a round, at its end.
    Random original(5);
    for (int place = 0; place < 70; ++place) {
        CAPTURE(place);
        Random copied(original), counted(5);
        for (int i = 0; i < place; ++i) counted.nextInt(7);
        for (int round = 0; round < 40; ++round) REQUIRE(copied.nextShort() == counted.nextShort());
        original.nextInt(7);
    }
}

TEST_CASE("a draw in a program is the same as one by a call into the library") {
    // volatile, so that these are not resolved to the code of the header
    int (Random::*volatile nextInt)(int) = &Random::nextInt;
    double (Random::*volatile nextDouble)() = &Random::nextDouble;
    Random called(11), direct(11);
    for (int round = 0; round < 100; ++round) {
        REQUIRE((called.*nextInt)(1000) == direct.nextInt(1000));
        REQUIRE((called.*nextDouble)() == direct.nextDouble());
    }
}

namespace {

bool sameSequence(Random a, Random b) {
    for (int i = 0; i < 8; ++i)
        if (a.nextInt(16384) != b.nextInt(16384)) return false;
    return true;
}

// How much more than ticks the seed of random is, up to 999; -1 if it is none
// of these.
int offsetOf(const Random& random, std::uint32_t ticks) {
    for (std::uint32_t offset = 0; offset < 1000; ++offset)
        if (sameSequence(random, Random(static_cast<int>(ticks + offset))))
            return static_cast<int>(offset);
    return -1;
}

}  // namespace

TEST_CASE("a generator without a seed takes the ticks and how many were made before it") {
    int pairs = 0;
    for (int tries = 0; pairs < 20 && tries < 400; ++tries) {
        const std::uint32_t ticks = Orlune::Clock::Ticks();
        const Random first, second;
        if (Orlune::Clock::Ticks() != ticks) continue;  // which tick they saw is not known
        ++pairs;
        const int offset = offsetOf(first, ticks);
        CAPTURE(offset);
        CHECK(offset >= 1);  // the process-wide one was the first
        CHECK(offset >= 2 * (pairs - 1));
        CHECK(offsetOf(second, ticks) == offset + 1);
    }
    CHECK(pairs == 20);
}

TEST_CASE("ranini makes the process-wide generator repeat a Random of that seed") {
    for (int seed : kSeeds) {
        CAPTURE(seed);
        ranini(seed);
        Random random(seed);
        for (int round = 0; round < 50; ++round) {
            CHECK(ranint(1000) == random.nextInt(1000));
            CHECK(randou() == random.nextDouble());
        }
    }
}

TEST_CASE("the host's default seed for noise is at hand, and drawing leaves it alone") {
    CHECK(noiseed == 1234567);
    noiseed = 5;
    ranini(noiseed);
    ranint(10);
    CHECK(noiseed == 5);
    noiseed = 1234567;
}

TEST_CASE("random numbers allocate nothing") {
    const long before = allocationCount();
    Random random(3);
    int ints[100];
    random.nextInts(6, ints, 100);
    Random copy(random);
    copy.nextDouble();
    CHECK(allocationCount() == before);
}
