// Every form of repetition gives the table form's pixels.

#include <doctest/doctest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "raster/replicate.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

using namespace Vaskel;

namespace {

constexpr unsigned kSeed = 431;

// Lines that end at an unmapped page, and lines that begin at one.
void checkForms(const std::vector<std::uint32_t>& sources, std::size_t width,
                std::mt19937& random) {
    const Replication replication(sources, width);
    for (const auto layout : {GuardedBytes::AtEnd, GuardedBytes::AtStart}) {
        GuardedBytes line(4 * width, layout), want(4 * sources.size(), layout);
        for (std::size_t i = 0; i < line.size(); ++i)
            line[i] = static_cast<unsigned char>(random());
        const auto* const pixels = reinterpret_cast<const unsigned int*>(line.data());
        kReplicateTable.run(replication, pixels, 0, want.data());
        for (std::size_t j = 0; j < sources.size(); ++j)
            REQUIRE(std::memcmp(&want[4 * j], &line[4 * sources[j]], 4) == 0);
        for (const ReplicateForm* form : replicateForms().subspan(1)) {
            CAPTURE(std::string(form->name));
            GuardedBytes got(4 * sources.size(), layout);
            form->run(replication, pixels, 0, got.data());
            REQUIRE(got == want);
            // The next line may be anywhere, or nowhere.
            form->run(replication, pixels, 4 * width + (std::uintptr_t{1} << 40), got.data());
            REQUIRE(got == want);
        }
    }
}

}  // namespace

TEST_CASE("repetition: every form gives the table form's pixels") {
    std::mt19937 random(kSeed);
    for (std::int32_t width : {1, 2, 7, 8, 9, 15, 16, 17, 40, 333})
        for (double factor : {0.3, 0.5, 0.99, 1.0, 1.0000001, 1.25, 1.5, 2.0, 2.5, 3.0, 4.17, 7.9,
                              8.0, 9.5, 40.0}) {
            CAPTURE(width);
            CAPTURE(factor);
            const auto count = static_cast<std::int64_t>(width * factor);
            checkForms(replicationSources(factor, width, count), static_cast<std::size_t>(width),
                       random);
        }
}

// Not what factors give, but what the form is told: any steps of 0 and 1.
TEST_CASE("repetition: any dense sources, every form") {
    std::mt19937 random(kSeed + 1);
    for (int round = 0; round < 1000; ++round) {
        const std::size_t width = 1 + random() % 60;
        std::vector<std::uint32_t> sources;
        const auto likely = random() % 5;
        for (std::uint32_t i = 0; i < width && sources.size() < 300; i += random() % 4 < likely)
            sources.push_back(i);
        checkForms(sources, width, random);
    }
}

TEST_CASE("repetition: eights hold what vectors can take") {
    struct Row {
        const char* why;
        std::vector<std::uint32_t> sources;
        std::size_t width, eights;
    };
    const Row rows[] = {
        {"no pixels", {}, 8, 0},
        {"seven", {0, 0, 1, 2, 2, 3, 4}, 8, 0},
        {"eight", {0, 0, 1, 2, 2, 3, 4, 4}, 8, 1},
        {"all different", {0, 1, 2, 3, 4, 5, 6, 7}, 8, 1},
        {"a line of seven", {0, 0, 1, 2, 2, 3, 4, 4}, 7, 0},
        {"too near its end", {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1}, 8, 1},
        {"too far apart", {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 9}, 20, 0},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const Replication replication(row.sources, row.width);
        REQUIRE(replication.eights.size() == row.eights);
        for (std::size_t j = 0; j < 8 * row.eights; ++j) {
            const EightSources& eight = replication.eights[j / 8];
            CHECK(eight.first + eight.places[j % 8] == row.sources[j]);
        }
    }
    for (double factor : {1.0, 1.25, 4.17}) {  // from 1 on all that lie before the end
        const auto count = static_cast<std::int64_t>(100 * factor);
        const Replication replication(replicationSources(factor, 100, count), 100);
        CHECK(replication.eights.size() >= static_cast<std::size_t>(92 * factor) / 8);
    }
}

TEST_CASE("repetition: the forced form runs") {
    static int calls = 0;
    static std::uintptr_t nextAt = 0;
    calls = 0;
    static const ReplicateForm counting = {
        "counting", [](const Replication& replication, const unsigned int* line,
                       std::uintptr_t ahead, unsigned char* out) {
            ++calls;
            nextAt = ahead;
            kReplicateTable.run(replication, line, ahead, out);
        }};
    forceReplicateForm(&counting);
    const unsigned lines[3][4] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 8, 7, 6}};
    upsampler sampler(2, 3, 4);
    unsigned out[6];
    for (const unsigned(&line)[4] : lines) {
        CHECK(nextAt == 0);
        sampler.stuff(line);
        while (sampler.ready()) sampler.get(out, 24);
    }
    forceReplicateForm(nullptr);
    CHECK(calls == 3);
    CHECK(nextAt == sizeof lines[0]);  // known from three lines on
    sampler.stuff(lines[0]);
    CHECK(calls == 3);
}
