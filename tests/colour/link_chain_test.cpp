#include <doctest/doctest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "platform/libiccprofile.h"
#include "tests/colour/recording_links.h"
#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/colour.h"

namespace {

using Vaskel::colsynlnk;
using Calls = std::vector<std::string>;

void* handle(std::uintptr_t n) { return reinterpret_cast<void*>(n); }

// What process makes of pixels of value 10; 77 is what out held.
int processed(const colsynlnk& chain, std::size_t count, int& value) {
    GuardedBytes in(4 * count), out(4 * count);
    for (std::size_t i = 0; i < in.size(); ++i) in[i] = 10, out[i] = 77;
    const int rc = chain.process(in.data(), out.data(), count);
    value = count ? out[0] : -1;
    for (std::size_t i = 0; i < out.size(); ++i) REQUIRE(out[i] == out[0]);
    return rc;
}

TEST_CASE("colsynlnk: profiles make links between neighbours") {
    RecordingLinks recorder;
    {
        colsynlnk chain;
        chain.add(nullptr, 1, 99);
        chain.add(handle(1), 1, 5);
        CHECK(recorder.take() == Calls{"intent 1 1"});
        CHECK_FALSE(chain.isvalid(5, 5));  // one code, no link
        chain.add(handle(2), 9, 6);
        chain.add(handle(3), 10, 7);  // keeps its own intent
        CHECK(recorder.take() == Calls{"intent 2 9", "link 1>2", "link 2>3"});
        CHECK(chain.isvalid(5, 7));
        CHECK_FALSE(chain.isvalid(6, 7));
        CHECK_FALSE(chain.isvalid(5, 6));
        int value;
        CHECK(processed(chain, 3, value) == 1);
        CHECK(value == 12);
        CHECK(recorder.take() == Calls{"many 101 x3 depth 8 5>6", "many 102 x3 depth 8 6>7"});
        CHECK(processed(chain, 1, value) == 1);
        CHECK(recorder.take() == Calls{"one 101 depth 8 5>6", "one 102 depth 8 6>7"});
    }
    CHECK(recorder.take() == Calls{"dispose 101", "dispose 102", "close 1", "close 2", "close 3"});
}

TEST_CASE("colsynlnk: links given by the caller stay the caller's") {
    RecordingLinks recorder;
    {
        colsynlnk chain;
        chain.addlink(nullptr, 1, 2);
        chain.addlink(handle(21), 5, 6);
        chain.addlink(handle(22), 7, 8);  // 7 is not compared with 6, nor kept
        CHECK(chain.isvalid(5, 8));
        int value;
        CHECK(processed(chain, 2, value) == 1);
        CHECK(recorder.take() == Calls{"many 21 x2 depth 8 5>6", "many 22 x2 depth 8 6>8"});
    }
    CHECK(recorder.take().empty());
}

TEST_CASE("colsynlnk: pixels go through any number of links") {
    RecordingLinks recorder;
    for (int links = 1; links <= 7; ++links)
        for (const std::size_t count :
             {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{333}}) {
            CAPTURE(links);
            CAPTURE(count);
            colsynlnk chain;
            for (int i = 0; i < links; ++i) chain.addlink(handle(21), 5, 5);
            int value;
            CHECK(processed(chain, count, value) == 1);
            if (count) CHECK(value == 10 + links);
            const Calls calls = recorder.take();
            REQUIRE(calls.size() == static_cast<std::size_t>(links));
            CHECK(calls[0].substr(0, 3) == (count == 1 ? "one" : "man"));
        }
}

TEST_CASE("colsynlnk: a long chain is not moved at every link") {
    RecordingLinks recorder;
    colsynlnk chain;
    const long before = allocationCount();
    for (int i = 0; i < 1000; ++i) chain.addlink(handle(21), 5, 5);
    CHECK(allocationCount() - before <= 22);  // of two lists, doubled ten times each
    CHECK(chain.isvalid(5, 5));
}

TEST_CASE("colsynlnk: without a link nothing is written, and that is success") {
    RecordingLinks recorder;
    colsynlnk chain;
    int value;
    CHECK(processed(chain, 2, value) == 1);
    CHECK(value == 77);
    chain.add(handle(1), 10, 5);
    CHECK(processed(chain, 2, value) == 1);
    CHECK(value == 77);
    CHECK_FALSE(chain.isvalid(5, 5));
}

TEST_CASE("colsynlnk: a link that refuses or throws stops the chain") {
    for (int at = 1; at <= 4; ++at) {
        CAPTURE(at);
        RecordingLinks recorder;
        colsynlnk chain;
        for (int i = 0; i < 4; ++i) chain.addlink(handle(21), 5, 5);
        recorder.failAtMatch = at;
        int value;
        CHECK(processed(chain, 2, value) == 0);
        CHECK(value == 77);
        CHECK(recorder.take().size() == static_cast<std::size_t>(at));
        recorder.matches = recorder.failAtMatch = 0;
        recorder.throwAtMatch = at;
        CHECK_THROWS_AS(processed(chain, 2, value), RecordingLinks::Thrown);
    }
}

TEST_CASE("colsynlnk: a link that could not be made stays and makes process fail") {
    RecordingLinks recorder;
    recorder.refuseLinks = true;
    colsynlnk chain;
    chain.add(handle(1), 10, 5);
    chain.add(handle(2), 10, 6);
    CHECK(chain.isvalid(5, 6));
    int value;
    CHECK(processed(chain, 2, value) == 0);
    recorder.take();
    chain.reset();
    CHECK(recorder.take() == Calls{"close 1", "close 2"});
}

TEST_CASE("colsynlnk: reset disposes of as many links as lie between profiles") {
    RecordingLinks recorder;
    colsynlnk chain;
    chain.add(handle(1), 10, 5);
    chain.add(handle(2), 10, 6);
    chain.addlink(handle(21), 6, 7);
    recorder.take();
    chain.reset();
    CHECK(recorder.take() == Calls{"dispose 101", "close 1", "close 2"});
    // A caller's link that stands where a profile's would is disposed of.
    chain.addlink(handle(22), 5, 6);
    chain.add(handle(3), 10, 6);
    chain.add(handle(4), 10, 7);
    recorder.take();
    chain.reset();
    CHECK(recorder.take() == Calls{"dispose 22", "close 3", "close 4"});
    chain.reset();
    CHECK(recorder.take().empty());
    CHECK_FALSE(chain.isvalid(5, 7));
    chain.add(handle(5), 10, 5);
    chain.add(handle(5), 10, 5);  // twice added, twice closed
    recorder.take();
    chain.reset();
    CHECK(recorder.take() == Calls{"dispose 103", "close 5", "close 5"});
}

TEST_CASE("colsynlnk: clear forgets, copies share") {
    RecordingLinks recorder;
    {
        colsynlnk chain;
        chain.add(handle(1), 10, 5);
        chain.add(handle(2), 10, 6);
        colsynlnk copy(chain), other;
        other.add(handle(7), 10, 5);
        recorder.take();
        other = chain;  // profile 7 is forgotten, not closed
        CHECK(other.isvalid(5, 6));
        CHECK(copy.isvalid(5, 6));
        copy.clear();
        other.clear();
        CHECK_FALSE(copy.isvalid(5, 6));
        CHECK(recorder.take().empty());
    }
    CHECK(recorder.take() == Calls{"dispose 101", "close 1", "close 2"});
}

TEST_CASE("colsynlnk: sizes that overflow and memory that ends give 0") {
    RecordingLinks recorder;
    colsynlnk chain;
    chain.addlink(handle(21), 5, 5);
    chain.addlink(handle(21), 5, 5);
    unsigned char pixel[4] = {};
    CHECK(chain.process(pixel, pixel, std::numeric_limits<std::size_t>::max() / 4 + 1) == 0);
    CHECK(chain.process(pixel, pixel, std::numeric_limits<std::size_t>::max() / 4) == 0);
    CHECK(chain.process(pixel, pixel, std::numeric_limits<std::size_t>::max() / 8 + 1) == 0);
    CHECK(chain.process(pixel, pixel, std::numeric_limits<std::size_t>::max() / 8) == 0);
    CHECK(recorder.take().empty());
    chain.addlink(handle(21), 5, 5);
    for (int n = 1; n <= 2; ++n) {
        GuardedBytes in(400), out(400);
        const FailingAllocation failing(n);
        CHECK(chain.process(in.data(), out.data(), 100) == 0);
    }
}

TEST_CASE("colsynlnk: a single pixel needs no memory") {
    RecordingLinks recorder;
    recorder.calls.reserve(100);  // the recorder's own lines are all that is counted
    colsynlnk chain;
    for (std::uintptr_t link : {101, 102, 103}) chain.addlink(handle(link), 5, 5);
    const unsigned char in[4] = {1, 2, 3, 4};
    unsigned char out[4];
    const long before = allocationCount();
    for (std::uintptr_t link : {101, 102, 103})
        LibICCProfile::Match1Colour(handle(link), 8, 5, in, 5, out);
    const long calls = allocationCount() - before;
    CHECK(chain.process(in, out, 1) == 1);
    CHECK(allocationCount() - before == 2 * calls);
    CHECK(out[3] == 7);
}

TEST_CASE("colsynlnk: memory that ends in add leaves the chain as it was") {
    RecordingLinks recorder;
    recorder.calls.reserve(1000);
    int added = 0;
    const int failures = failEachAllocation([&] {
        colsynlnk chain;
        try {
            chain.add(handle(1), 10, 5);
            chain.add(handle(2), 10, 6);
            ++added;
        } catch (const std::bad_alloc&) {
            CHECK_FALSE(chain.isvalid(5, 6));
        }
        chain.clear();
    });
    CHECK(failures > 2);
    CHECK(added > 0);
}

}  // namespace
