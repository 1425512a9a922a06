#include "fonts/outline_forms.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "fonts/type1_program.h"
#include "tests/fonts/drawn_glyphs.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/fonts.h"

namespace {

using Fonts::Box;
using Fonts::Outline;
using Fonts::OutlineForm;
using Bytes = std::vector<unsigned char>;

// An outline in memory that ends where forms may read last.
class Drawing {
 public:
    using Points = std::vector<std::int16_t>;

    Drawing(const Points& points, const Bytes& steps)
        : mPoints(2 * (2 + points.size()) + Fonts::kReadAhead), mSteps(steps.size()) {
        std::fill_n(mPoints.data(), mPoints.size(), static_cast<unsigned char>(0x5A));
        std::fill_n(mPoints.data(), 4, static_cast<unsigned char>(0));
        auto* const to = reinterpret_cast<std::int16_t*>(mPoints.data() + 4);
        std::copy(points.begin(), points.end(), to);
        std::copy(steps.rbegin(), steps.rend(), mSteps.data());
        outline.points = to;
        outline.behindSteps = mSteps.data() + steps.size();
        outline.stepCount = steps.size();
        outline.pointCount = points.size() / 2;
    }

    Outline outline;

 private:
    GuardedBytes mPoints, mSteps;
};

std::string boxText(const Box& box) {
    return std::to_string(box.smallestX) + ' ' + std::to_string(box.smallestY) + ' ' +
           std::to_string(box.largestX) + ' ' + std::to_string(box.largestY);
}

// The box, point by point.
Box slowBox(const Drawing::Points& points, const Bytes& steps) {
    Box box{0, 0, 0, 0};
    std::size_t at = 0;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        for (int k = Fonts::kStepKinds[steps[i]].points; k > 0; --k, at += 2) {
            const std::int32_t x = points[at], y = points[at + 1];
            if (i == 0) {
                box = {x, x, y, y};
                continue;
            }
            box = {std::min(box.smallestX, x), std::min(box.smallestY, y),
                   std::max(box.largestX, x), std::max(box.largestY, y)};
        }
    }
    return box;
}

// What a form makes of an outline and, meanwhile, of an entry.
struct Made {
    Bytes charstring, cipher;
    std::string box;

    bool operator==(const Made& other) const = default;
};

Made make(Fonts::EncodeBeside encodeBeside, const Outline& outline, const Bytes& entry,
          std::size_t textLength) {
    GuardedBytes room(Fonts::longestCharstring(outline) + Fonts::kWriteAhead);
    GuardedBytes cipher(entry.size());
    Fonts::PrivateEnd end{cipher.data(), Fonts::WideEncryption(Fonts::Encryption::kEexecKey)};
    Fonts::encryptText(end, Fonts::Plain(entry).first(textLength));
    const Fonts::Encoded encoded =
        encodeBeside(room.data(), outline, end, Fonts::Plain(entry).subspan(textLength));
    REQUIRE(end.at == cipher.data() + entry.size());
    return {Bytes(room.data(), encoded.end), Bytes(cipher.data(), end.at), boxText(encoded.box)};
}

// Both encryptions, one after the other.
Bytes encrypted(Bytes entry, std::size_t textLength) {
    using Fonts::Encryption;
    Encryption(Encryption::kCharstringKey)
        .encrypt(entry.data() + textLength, entry.size() - textLength);
    Encryption(Encryption::kEexecKey).encrypt(entry.data(), entry.size());
    return entry;
}

Bytes someBytes(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i * 37 + i / 7);
    return bytes;
}

void checkAllForms(const Drawing::Points& points, const Bytes& steps, const Bytes& entry,
                   std::size_t textLength) {
    const Drawing drawing(points, steps);
    const Outline& outline = drawing.outline;
    Bytes charstring(Fonts::longestCharstring(outline));
    charstring.resize(static_cast<std::size_t>(Fonts::encodePlain(charstring.data(), outline) -
                                               charstring.data()));
    const Made want{charstring, encrypted(entry, textLength), boxText(slowBox(points, steps))};
    REQUIRE(boxText(Fonts::boxOf(outline)) == want.box);
    for (const OutlineForm& form : Fonts::outlineForms()) {
        CAPTURE(std::string(form.name));
        REQUIRE(make(form.encodeBeside, outline, entry, textLength) == want);
    }
}

TEST_CASE("outline: every form encodes every difference in every place") {
    const Bytes entry = someBytes(20);
    int declined = 0, taken = 0;
    for (int d = -1300; d <= 1300; ++d) {
        CAPTURE(d);
        (d < -1131 || d > 1131 ? declined : taken) += 1;
        for (std::size_t place = 0; place < 6; ++place) {
            Drawing::Points points{7, -9, 1, 2, 3, 4, 5, 6};
            const auto difference = static_cast<std::int16_t>(d);
            points[place + 2] = static_cast<std::int16_t>(points[place] + difference);
            checkAllForms(points, {Fonts::kMoveStep, Fonts::kCurveStep}, entry, 5);
            if (place < 2) {
                points.resize(4);
                checkAllForms(points, {Fonts::kMoveStep, Fonts::kLineStep}, entry, 5);
            }
        }
    }
    CHECK(taken == 2 * 1131 + 1);
    CHECK(declined > 0);
}

TEST_CASE("outline: every form takes any steps, any coordinates of 16 bits and any entry") {
    std::minstd_rand random(3);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    const auto far = [&] {  // about the powers of two
        const int power = 1 << below(16);
        return std::clamp((below(2) ? power : -power) + below(5) - 2, -32768, 32767);
    };
    int longNumbers = 0, shortNumbers = 0;
    for (int round = 0; round < 4000; ++round) {
        CAPTURE(round);
        const int spread = round % 4 == 0 ? 65535 : 2200;
        Drawing::Points points;
        Bytes steps;
        int at[2] = {0, 0};
        for (int count = below(round % 8 == 0 ? 60 : 8); count > 0; --count) {
            const auto step = static_cast<unsigned char>(below(4));
            steps.push_back(step);
            for (int i = 0; i < 2 * Fonts::kStepKinds[step].points; ++i) {
                int& number = at[i % 2];
                const int before = number;
                number = below(20) != 0
                             ? std::clamp(number + below(spread) - spread / 2, -32768, 32767)
                             : far();
                ++(std::abs(number - before) > 1131 ? longNumbers : shortNumbers);
                points.push_back(static_cast<std::int16_t>(number));
            }
        }
        const Bytes entry = someBytes(static_cast<std::size_t>(below(300)));
        checkAllForms(points, steps, entry,
                      std::min(entry.size(), static_cast<std::size_t>(below(30))));
    }
    CHECK(longNumbers > 5000);
    CHECK(shortNumbers > 20000);
}

TEST_CASE("outline: the box takes the seed, whatever comes first, and each point once") {
    using Fonts::kCloseStep, Fonts::kCurveStep, Fonts::kLineStep, Fonts::kMoveStep;
    for (const unsigned char first : {kMoveStep, kLineStep, kCurveStep, kCloseStep}) {
        for (int more = 0; more < 20; ++more) {
            Drawing::Points points;
            Bytes steps{first};
            for (int i = 0; i < Fonts::kStepKinds[first].points; ++i)
                points.insert(points.end(), {static_cast<std::int16_t>(500 - i), 20});
            for (int i = 0; i < more; ++i) {
                steps.push_back(kLineStep);
                points.insert(points.end(), {static_cast<std::int16_t>(i * 300 % 700),
                                             static_cast<std::int16_t>(-i * 170 % 900)});
            }
            CAPTURE(static_cast<int>(first));
            CAPTURE(more);
            checkAllForms(points, steps, someBytes(40), 3);
        }
    }
}

// The best form again at the end of a test.
struct Forced {
    explicit Forced(const OutlineForm& form) { Fonts::forceOutlineForm(&form); }
    ~Forced() { Fonts::forceOutlineForm(nullptr); }
    Forced(const Forced&) = delete;
    Forced& operator=(const Forced&) = delete;
};

TEST_CASE("outline: fonts are the same by every form") {
    const auto forms = Fonts::outlineForms();
    REQUIRE(std::string(forms.front().name) == "plain");
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        CAPTURE(seed);
        constexpr int kSpreads[] = {900, 20000, 100000};
        const std::vector<DrawnGlyph> drawn = drawnGlyphs(seed, kSpreads[seed % 3]);
        Fonts::Type1Font font("F");
        draw(drawn, font);
        const auto dataBy = [&](const OutlineForm& form) {
            const Forced forced(form);
            font.editChar(0);
            return font.getData();
        };
        const Bytes want = dataBy(forms.front());
        for (const OutlineForm& form : forms) {
            CAPTURE(std::string(form.name));
            CHECK(dataBy(form) == want);
        }
    }
}

int gOutlines = 0;

TEST_CASE("outline: a form that is forced encodes, but no coordinates of more than 16 bits") {
    constexpr OutlineForm kCounting = {
        "counting", [](unsigned char* out, const Outline& outline, Fonts::PrivateEnd& end,
                       Fonts::Plain charstring) {
            ++gOutlines;
            return Fonts::encodeBesidePlain(out, outline, end, charstring);
        }};
    Fonts::Type1Font font("F");
    for (unsigned char code = 1; code <= 3; ++code) {
        REQUIRE(font.addChar(code, ""));
        font.editChar(code)->moveTo(code == 2 ? 32768 : 32767, -32768);
    }
    Bytes counted;
    {
        const Forced forced(kCounting);
        counted = font.getData();
    }
    CHECK(gOutlines == 2);
    font.editChar(1);
    CHECK(font.getData() == counted);
    CHECK(gOutlines == 2);
}

}  // namespace
