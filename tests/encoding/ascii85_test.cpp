#include <doctest/doctest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "encoding/ascii85_digits.h"
#include "vaskel/encoding.h"

namespace {

struct Sink : Vaskel::ascii85out_base {
    std::string text;
    std::size_t throwAt = std::string::npos;
    struct Full {};
    void putuns8(unsigned char c) override {
        if (text.size() == throwAt) throw Full{};
        text.push_back(static_cast<char>(c));
    }
    void add(const std::vector<int>& bytes) {
        for (const int b : bytes) CHECK(encode(static_cast<unsigned char>(b)) == 0);
    }
};

std::string encoded(const std::vector<int>& bytes) {
    Sink sink;
    sink.add(bytes);
    sink.finish();
    return sink.text;
}

struct Row {
    const char* why;
    std::vector<int> bytes;
    const char* text;
};

// Digits by hand: 255 padded is 255 * 2^24 = 4278190080 = 81*85^4 + 81*85^3 +
// ..., 'r' is 33 + 81.
const Row kRows[] = {
    {"nothing", {}, "~>"},
    {"the usual example", {77, 97, 110, 32}, "9jqo^~>"},
    {"four zeros", {0, 0, 0, 0}, "z~>"},
    {"three zeros: no z at the end", {0, 0, 0}, "!!!!~>"},
    {"one zero", {0}, "!!~>"},
    {"one byte", {255}, "rr~>"},
    // 65535 * 65536 = 4294901760 has the digits 82 23 45 6 0; three are written
    {"two bytes", {255, 255}, "s8N~>"},
    {"all ones", {255, 255, 255, 255}, "s8W-!~>"},
    {"one", {0, 0, 0, 1}, "!!!!\"~>"},
    {"zeros after a group", {77, 97, 110, 32, 0, 0, 0, 0, 0}, "9jqo^z!!~>"},
};

TEST_CASE("ascii85: groups, zeros and ends") {
    for (const Row& row : kRows) {
        CAPTURE(std::string(row.why));
        CHECK(encoded(row.bytes) == row.text);
    }
}

TEST_CASE("ascii85: a line ends with its 100th character") {
    // 20 groups of five characters fill a line, and the line feed comes at once.
    std::vector<int> bytes;
    std::string line;
    for (int i = 0; i < 20; ++i) {
        bytes.insert(bytes.end(), {77, 97, 110, 32});
        line += "9jqo^";
    }
    CHECK(encoded(bytes) == line + "\n~>");
    bytes.insert(bytes.end(), {0, 0, 0, 0});
    CHECK(encoded(bytes) == line + "\nz~>");
}

TEST_CASE("ascii85: the end marker stays on one line") {
    const std::string line(100, 'z');
    const auto zeros = [](int groups) {
        return std::vector<int>(static_cast<std::size_t>(4 * groups), 0);
    };
    CHECK(encoded(zeros(98)) == std::string(98, 'z') + "~>\n");  // > is the 100th
    CHECK(encoded(zeros(99)) == std::string(99, 'z') + "~>\n");  // ~ is, > is the 101st
    CHECK(encoded(zeros(100)) == line + "\n~>");
    // 98 and a partial group of two characters: the second one fills the line.
    std::vector<int> partial = zeros(98);
    partial.push_back(255);
    CHECK(encoded(partial) == std::string(98, 'z') + "rr\n~>");
}

TEST_CASE("ascii85: a copy goes on from where the other one stands") {
    Sink first;
    first.add({77, 97});
    Sink second(first);
    second.add({110, 32});
    second.finish();
    CHECK(second.text == "9jqo^~>");
    Sink third;
    third.add({1, 2, 3});
    third = first;
    third.add({110, 32});
    third.finish();
    CHECK(third.text == "9jqo^~>");
    first.finish();
    CHECK(first.text == encoded({77, 97}));
}

TEST_CASE("ascii85: the destructor writes nothing, and a full destination does no harm") {
    std::string text = "kept";
    {
        struct ToOutside : Vaskel::ascii85out_base {
            std::string& out;
            explicit ToOutside(std::string& o) : out(o) {}
            void putuns8(unsigned char c) override { out.push_back(static_cast<char>(c)); }
        } sink(text);
        sink.encode(1);
    }
    CHECK(text == "kept");
    for (std::size_t at = 0; at < 12; ++at) {
        Sink sink;
        sink.throwAt = at;
        int thrown = 0;
        for (int i = 0; i < 40; ++i) {
            try {
                sink.encode(static_cast<unsigned char>(i));
            } catch (const Sink::Full&) {
                ++thrown;
            }
        }
        CHECK(thrown > 0);
        CHECK_THROWS_AS(sink.finish(), Sink::Full);
    }
}

TEST_CASE("ascii85: lines keep their length behind a group that a full destination cut off") {
    for (std::size_t at = 0; at < 250; ++at) {
        CAPTURE(at);
        Sink sink;
        sink.throwAt = at;
        const auto encodeAll = [&sink] {
            for (int i = 0; i < 400; ++i) sink.encode(static_cast<unsigned char>(i | 1));
        };
        CHECK_THROWS_AS(encodeAll(), Sink::Full);
        // A line feed that was not taken comes behind the next character.
        const bool feedIsLost = at % 101 == 100;
        sink.throwAt = std::string::npos;
        encodeAll();
        std::size_t begin = 0, end;
        for (; (end = sink.text.find('\n', begin)) != std::string::npos; begin = end + 1)
            CHECK(end - begin == (feedIsLost && begin / 101 == at / 101 ? 101 : 100));
        CHECK(begin > at);
    }
}

TEST_CASE("ascii85: a copy made while a character is written has the column before it") {
    struct Copying : Vaskel::ascii85out_base {
        std::string text;
        std::size_t copyAt = std::string::npos;
        std::unique_ptr<Copying> copy;
        void putuns8(unsigned char c) override {
            if (text.size() == copyAt) {
                copy = std::make_unique<Copying>();
                static_cast<ascii85out_base&>(*copy) = *this;
            }
            text.push_back(static_cast<char>(c));
        }
    };
    for (std::size_t at = 0; at < 220; ++at) {
        CAPTURE(at);
        Copying stream;
        stream.copyAt = at;
        for (int i = 0; i < 400; ++i) stream.encode(static_cast<unsigned char>(i % 23 < 8 ? 0 : i));
        REQUIRE(stream.copy);
        const std::size_t feed = stream.text.rfind('\n', at);
        // The line feed itself comes with the line still full, and one behind each
        // character more.
        const bool isFeed = feed == at;
        const std::size_t begin = feed == std::string::npos ? 0 : feed + 1;
        const std::size_t column = isFeed ? 100 : at - begin;
        for (int i = 0; i < 404; ++i) stream.copy->encode(0);
        CHECK(stream.copy->text.find('\n') == (isFeed ? 1 : 100 - column));
    }
}

// The decoder of the format's definition, written apart from the encoder.
std::vector<int> decoded(const std::string& text) {
    std::vector<int> bytes;
    std::uint64_t value = 0;
    int digits = 0;
    for (const char c : text) {
        if (c == '\n') continue;
        if (c == '~') break;
        if (c == 'z') {
            REQUIRE(digits == 0);
            bytes.insert(bytes.end(), {0, 0, 0, 0});
            continue;
        }
        REQUIRE(c >= '!');
        REQUIRE(c <= 'u');
        value = value * 85 + static_cast<std::uint64_t>(c - '!');
        if (++digits == 5) {
            REQUIRE(value <= 0xFFFFFFFFu);
            for (int shift = 24; shift >= 0; shift -= 8)
                bytes.push_back(static_cast<int>(value >> shift & 255));
            value = 0;
            digits = 0;
        }
    }
    REQUIRE(digits != 1);
    if (digits > 0) {
        for (int i = digits; i < 5; ++i) value = value * 85 + 84;
        for (int i = 0; i < digits - 1; ++i)
            bytes.push_back(static_cast<int>(value >> (24 - 8 * i) & 255));
    }
    return bytes;
}

TEST_CASE("ascii85: a decoder gives the bytes back, no line is longer than 101") {
    std::mt19937 random(85);
    for (int length = 0; length < 700; ++length) {
        std::vector<int> bytes;
        for (int i = 0; i < length; ++i)
            bytes.push_back(random() % 3 ? static_cast<int>(random() % 256) : 0);
        const std::string text = encoded(bytes);
        CAPTURE(length);
        REQUIRE(decoded(text) == bytes);
        for (std::size_t at = 0, end = 0; at < text.size(); at = end + 1) {
            end = std::min(text.find('\n', at), text.size());
            REQUIRE(end - at <= 101);
        }
    }
}

TEST_CASE("ascii85: digits by products are those of the divisions") {
    constexpr std::uint32_t powers[] = {1, 85, 7225, 614125, 52200625};
    constexpr std::uint32_t highest = std::numeric_limits<std::uint32_t>::max();
    std::mt19937 random(4437);
    std::vector<std::uint32_t> values = {0, 1, highest - 1, highest};
    // On both sides of where each digit changes.
    for (const std::uint32_t power : powers) {
        for (int i = 0; i < 20000; ++i) {
            const auto turn = static_cast<std::uint32_t>(random() % (highest / power) + 1) * power;
            values.insert(values.end(), {turn - 1, turn, turn + 1});
        }
    }
    for (int i = 0; i < 100000; ++i) values.push_back(static_cast<std::uint32_t>(random()));
    for (const std::uint32_t value : values) {
        unsigned char want[5];
        Vaskel::digitsPlain(value, want);
        Vaskel::Digits85 got(value);
        CAPTURE(value);
        for (const unsigned char digit : want) REQUIRE(got.next() == digit);
    }
}

}  // namespace
