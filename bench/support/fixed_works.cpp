#include "bench/support/fixed_works.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "bench/support/page.h"
#include "bench/support/polygons.h"
#include "colour/ink_run.h"
#include "embedded/host.h"
#include "encoding/bigint_digits.h"
#include "encoding/unicode.h"
#include "encoding/unicode_blocks.h"
#include "fonts/outline_forms.h"
#include "geometry/edge_run.h"
#include "platform/pemmit.h"
#include "raster/downsample_cells.h"
#include "raster/downsample_picks.h"
#include "raster/replicate.h"
#include "vaskel/colour.h"
#include "vaskel/encoding.h"
#include "vaskel/fonts.h"
#include "vaskel/geometry.h"
#include "vaskel/messages.h"
#include "vaskel/raster.h"
#include "vaskel/units.h"
#include "vaskel/util.h"

namespace Bench {
namespace {

using Work = std::function<void()>;

// What a result is given to, so that no work is dropped.
volatile int gSink;
void use(int value) { gSink = value; }

std::vector<int> integers(std::size_t count, int low, int high, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<int> all(count);
    const auto span = static_cast<std::uint64_t>(high - low + 1);
    for (int& value : all) value = low + static_cast<int>(random() * span >> 32);
    return all;
}

std::shared_ptr<Pemmit::Path> pathOf(const Polygon& polygon) {
    const std::shared_ptr<Pemmit::Path> path(Pemmit::patbeg(),
                                             [](Pemmit::Path* p) { Pemmit::objrem(p); });
    for (const Vertex& v : polygon) Pemmit::patlin(path.get(), v.x, v.y);
    Pemmit::patendclo(path.get());
    return path;
}

// ---- messages ---------------------------------------------------------------

Work messages() {
    return [] {
        Vaskel::setAdvancedMessageHandler([](const char* text, Vaskel::MessageSeverity,
                                             Vaskel::MessageVolatility) { use(text[0]); });
        for (int page = 0; page < 100; ++page)
            Vaskel::message(Vaskel::kMessageError, Vaskel::kMessageLasting,
                            "cannot read %s, page %d", "document", page);
        Vaskel::setMessageHandler(boost::none);
    };
}

// ---- units ------------------------------------------------------------------

Work formatting() {
    const std::vector<int> distances = integers(1000, -1000000, 1000000, 1);
    return [distances] {
        Vaskel::setuni(1);
        char text[32];
        for (const int distance : distances) Vaskel::distostr(&distance, text), use(text[1]);
    };
}

Work parsing() {
    return [] {
        Vaskel::setuni(1);
        for (int i = 0; i < 200; ++i)
            for (const char* text : {"12.5", "-0.125", "210", "12.5cm", "10+2.5*3"}) {
                double value = 0;
                Vaskel::strtodouuni(text, &value, false, false);
                use(static_cast<int>(value));
            }
    };
}

// ---- geometry ---------------------------------------------------------------

Work crossings() {
    const std::vector<int> v = integers(8000, -(1 << 20), 1 << 20, 2);
    return [v] {
        for (std::size_t i = 0; i + 8 <= v.size(); i += 8) {
            int x = 0, y = 0;
            use(Vaskel::intcalc(v[i], v[i + 1], v[i + 2], v[i + 3], v[i + 4], v[i + 5], v[i + 6],
                                v[i + 7], &x, &y));
        }
    };
}

Work inside() {
    const auto path = pathOf(spiky(1000));
    const std::vector<int> points = integers(200, -(1 << 24), 1 << 24, 3);
    return [=] {
        for (std::size_t i = 0; i < points.size(); i += 2)
            use(Vaskel::insidePath(points[i], points[i + 1], path.get()));
    };
}

Work preparedInside() {
    const auto path = pathOf(spiky(1000));
    const std::vector<int> points = integers(2000, -(1 << 24), 1 << 24, 3);
    return [=] {
        const Vaskel::preparedPath prepared(path.get());
        for (std::size_t i = 0; i < points.size(); i += 2)
            use(prepared.inside(points[i], points[i + 1]));
    };
}

template <Polygon (*shape)(int)>
Work selfCrossing() {
    const auto path = pathOf(shape(5000));
    return [path] { use(Vaskel::intersect(path.get())); };
}

template <int filter>
Work cleaning() {
    Polygon jagged;
    std::mt19937 random(4);
    for (int i = 0; i < 2000; ++i)
        jagged.push_back({i * 10 + static_cast<int>(random() % 8), static_cast<int>(random() % 8)});
    const auto path = pathOf(jagged);
    return [path] {
        Vaskel::cleanpar(filter, 1, 1);
        Pemmit::objrem(Vaskel::clean(path.get(), -1));
        Vaskel::cleanpar(0, 0, 0);
    };
}

// ---- raster -----------------------------------------------------------------

class Tracer : public Vaskel::Vectorizer {
 public:
    explicit Tracer(const PageRuns& runs) : Vectorizer(0, 0, 0, 1, 1, false), mRuns(runs) {}
    ~Tracer() override {
        for (Pemmit::Path* const path : mPaths) Pemmit::objrem(path);
    }
    int getLine(int line, int* runs) override {
        const auto y = static_cast<std::size_t>(line);
        const std::size_t from = mRuns.begin[y];
        std::memcpy(runs, mRuns.positions.data() + from, (mRuns.begin[y + 1] - from) * sizeof(int));
        return 0;
    }
    void addPath(Pemmit::Path* path) override { mPaths.push_back(path); }

 private:
    const PageRuns& mRuns;
    std::vector<Pemmit::Path*> mPaths;
};

Work tracing() {
    const auto page = std::make_shared<Page>(makePage(640, 880));
    const auto runs = std::make_shared<PageRuns>(runsOf(*page));
    return [=] {
        Tracer tracer(*runs);
        use(tracer.vectorize(page->height, false));
    };
}

template <class Pixel, int factor, bool averaging>
Work reducing() {
    const std::vector<int> noise = integers(400, 0, INT_MAX - 1, 5);
    std::vector<Pixel> line(400);
    for (std::size_t i = 0; i < line.size(); ++i) line[i] = static_cast<Pixel>(noise[i] * 2);
    return [line] {
        Vaskel::downsampler sampler(factor / 100.0, 1, 400, 100);
        sampler.setFiltering(averaging);
        std::vector<Pixel> out(sampler.resize(400));
        for (int y = 0; y < 100; ++y) {
            sampler.stuff(line.data());
            while (sampler.ready()) sampler.get(out.data()), use(static_cast<int>(out[0]));
        }
    };
}

Work enlarging() {
    const std::vector<unsigned int> line(400, 0x12345678);
    return [line] {
        Vaskel::upsampler sampler(1, 2.5, 400);
        std::vector<unsigned int> out(static_cast<std::size_t>(sampler.resize(400)));
        for (int y = 0; y < 50; ++y) {
            sampler.stuff(line.data());
            while (sampler.ready())
                sampler.get(out.data(), static_cast<int>(4 * out.size())), use(out[0] > 0);
        }
    };
}

// ---- colour -----------------------------------------------------------------

Work inks() {
    const std::vector<int> pixels = integers(10000, 0, INT_MAX - 1, 6);
    return [pixels] {
        std::vector<unsigned char> bytes(4 * pixels.size());
        std::memcpy(bytes.data(), pixels.data(), bytes.size());
        Vaskel::cmykrgbrun(bytes.data(), static_cast<int>(pixels.size()));
        use(bytes[0]);
    };
}

// ---- fonts ------------------------------------------------------------------

Work font() {
    return [] {
        Fonts::Type1Font font("Fixed");
        for (int code = 33; code < 127; ++code) {
            const auto c = static_cast<unsigned char>(code);
            font.setCharWidth(c, 500);
            font.addChar(c, "");
            Fonts::Type1Glyph& glyph = *font.editChar(c);
            glyph.moveTo(100, 100);
            for (int i = 0; i < 20; ++i) {
                const int x = i * 37 % 900, y = i * 91 % 1400 - 300;
                glyph.curveTo(x, y, x + 40, y + 130, x + 200, y + code);
            }
            glyph.closePath();
        }
        use(font.getData().back());
    };
}

// ---- encoding ---------------------------------------------------------------

// Letters of 1, 2 and 3 bytes in turns of 16.
std::string text() {
    std::string made;
    for (int i = 0; i < 1500; ++i) {
        const char* const letters[] = {"a", "\xC3\xA9", "\xE4\xB8\xAD"};
        made += letters[i / 16 % 3];
    }
    return made;
}

Work unicodeWide() {
    const std::string utf8 = text();
    return [utf8] { use(Vaskel::ConvertUTF8ToUTF16String(utf8.c_str(), false).back()); };
}

Work unicodeNarrow() {
    const std::string utf16 = Vaskel::ConvertUTF8ToUTF16String(text().c_str(), false);
    return [utf16] { use(Vaskel::ConvertUTF16ToUTF8String(utf16.c_str()).back()); };
}

Work ascii85() {
    struct Stream : Vaskel::ascii85out_base {
        void putuns8(unsigned char c) override { use(c); }
    };
    const std::vector<int> bytes = integers(10000, 0, 255, 7);
    return [bytes] {
        Stream stream;
        for (const int byte : bytes) stream.encode(static_cast<unsigned char>(byte));
        stream.finish();
    };
}

Vaskel::bigint number(int digits, unsigned seed) {
    Vaskel::bigint made;
    for (const int digit : integers(static_cast<std::size_t>(digits), 1, 65535, seed)) {
        made *= static_cast<unsigned short>(65535);
        made += Vaskel::bigint(digit);
    }
    return made;
}

Work product() {
    const Vaskel::bigint a = number(256, 8), b = number(256, 9);
    return [=] { use(a * b == a); };
}

Work multiple() {
    const Vaskel::bigint a = number(1024, 8);
    return [=] {
        Vaskel::bigint product = a;
        use((product *= static_cast<unsigned short>(54321)) == a);
    };
}

Work division() {
    Embedded::onDebugLine([](const char*) {});  // negative results are told there
    const Vaskel::bigint a = number(256, 8), b = number(128, 9);
    return [=] {
        Vaskel::bigint quotient, remainder;
        a.divmod(b, quotient, remainder);
        use(quotient == remainder);
    };
}

Work urls() {
    return [] {
        Orlune::FileSpecURL url;
        for (int i = 0; i < 100; ++i) Vaskel::PathToURL("/volume/a folder/document", "file", url);
        use(1);
    };
}

// ---- util -------------------------------------------------------------------

Work draws() {
    return [] {
        Vaskel::Random random(42);
        int sum = 0;
        for (int i = 0; i < 1000; ++i) sum ^= random.nextInt(1000);
        use(sum);
    };
}

Work drawsInBlocks() {
    return [] {
        Vaskel::Random random(42);
        std::array<int, 1000> numbers{};
        random.nextInts(1000, numbers.data(), numbers.size());
        use(numbers.back());
    };
}

}  // namespace

const std::vector<FixedWork>& fixedWorks() {
    static const std::vector<FixedWork> all = {
        {"message: 100 texts with a number", messages},
        {"distostr: 1000 distances", formatting},
        {"strtodouuni: 1000 fields", parsing},
        {"intcalc: 1000 pairs", crossings},
        {"insidePath: 100 points, 1000 vertices", inside},
        {"preparedPath: 1000 points, 1000 vertices", preparedInside},
        {"intersect: star of 5000", selfCrossing<star>},
        {"intersect: Hilbert band of 5000", selfCrossing<hilbert>},
        {"clean: 2000 points, tolerance", cleaning<0>},
        {"clean: 2000 points, filter and tolerance", cleaning<1>},
        {"Vectorizer: page of 640 by 880", tracing},
        {"downsampler: 400 by 100 of 4 bytes by 2.5", reducing<unsigned int, 250, true>},
        {"downsampler: 400 by 100 of 4 bytes by 4", reducing<unsigned int, 400, true>},
        {"downsampler: 400 by 100 of 1 byte by 4", reducing<unsigned char, 400, true>},
        {"downsampler: 400 by 100 picked by 2.5", reducing<unsigned int, 250, false>},
        {"upsampler: 400 by 50 by 2.5", enlarging},
        {"cmykrgbrun: 10000 pixels", inks},
        {"Type1Font: 94 glyphs of 20 curves", font},
        {"UTF-8 to UTF-16: 1500 letters", unicodeWide},
        {"UTF-16 to UTF-8: 1500 letters", unicodeNarrow},
        {"ascii85: 10000 bytes", ascii85},
        {"bigint: product of 256 digits", product},
        {"bigint: 1024 digits times 16 bits", multiple},
        {"bigint: 256 by 128 digits", division},
        {"PathToURL: 100 paths", urls},
        {"Random: 1000 draws below 1000", draws},
        {"Random: 1000 draws in a block", drawsInBlocks},
    };
    return all;
}

void forceBaselineForms() {
    Vaskel::forceDownsampleForm(&Vaskel::kDownsampleTable);
    Vaskel::forcePickForm(&Vaskel::kPickTable);
    Vaskel::forceReplicateForm(&Vaskel::kReplicateTable);
    Vaskel::forceUnicodeForm(&Vaskel::kUnicodeOnePass);
    static constexpr Vaskel::InkRunForm table = {"table", Vaskel::inkRunTable};
    Vaskel::forceInkRunForm(&table);
#if defined(__x86_64__)
    Vaskel::forceEdgeRunForm(&Vaskel::kEdgeRunSse2);
    Fonts::forceOutlineForm(&Fonts::outlineForms()[1]);
#endif
    Vaskel::forceLimbLoops(&Vaskel::kLimbLoopsCarry);
}

}  // namespace Bench
