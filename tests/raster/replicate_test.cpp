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
    const Replication replication = {sources.data(), sources.size(), width,
                                     isDense(sources.data(), sources.size())};
    for (const auto layout : {GuardedBytes::AtEnd, GuardedBytes::AtStart}) {
        GuardedBytes line(4 * width, layout), want(4 * sources.size(), layout);
        for (std::size_t i = 0; i < line.size(); ++i)
            line[i] = static_cast<unsigned char>(random());
        const auto* const pixels = reinterpret_cast<const unsigned int*>(line.data());
        kReplicateTable.run(replication, pixels, want.data());
        for (std::size_t j = 0; j < sources.size(); ++j)
            REQUIRE(std::memcmp(&want[4 * j], &line[4 * sources[j]], 4) == 0);
        for (const ReplicateForm* form : replicateForms().subspan(1)) {
            CAPTURE(std::string(form->name));
            GuardedBytes got(4 * sources.size(), layout);
            form->run(replication, pixels, got.data());
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
            std::vector<std::uint32_t> sources(static_cast<std::size_t>(count));
            sources.resize(
                static_cast<std::size_t>(replicationSources(factor, width, count, sources.data())));
            CHECK((factor < 1 || isDense(sources.data(), sources.size())));
            checkForms(sources, static_cast<std::size_t>(width), random);
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

TEST_CASE("repetition: sources that leave pixels out are not dense") {
    const std::uint32_t sources[] = {0, 0, 1, 2, 2, 4};
    CHECK(isDense(sources, 0));
    CHECK(isDense(sources, 5));
    CHECK_FALSE(isDense(sources, 6));
}

TEST_CASE("repetition: the forced form runs") {
    static int calls = 0, dense = 0;
    calls = dense = 0;
    static const ReplicateForm counting = {
        "counting",
        [](const Replication& replication, const unsigned int* line, unsigned char* out) {
            ++calls;
            dense += replication.dense;
            kReplicateTable.run(replication, line, out);
        }};
    forceReplicateForm(&counting);
    const unsigned line[4] = {1, 2, 3, 4};
    upsampler larger(2, 3, 4), smaller(2, 1, 4);
    larger.stuff(line);
    smaller.stuff(line);
    forceReplicateForm(nullptr);
    CHECK(calls == 2);
    CHECK(dense == 1);
    larger.stuff(line);
    CHECK(calls == 2);
}
