// Assembling fonts: 256 real glyphs, and invented ones of many sizes; the form
// that fonts use beside the plain one and, where installed, t1asm of t1utils,
// which encrypts the same charstrings from their disassembly. "least_calls_and_keys"
// is the calls that draw the outlines and the one chain of keys that the encryption
// of a font's bytes is. t1asm is a program: what it takes for a font without glyphs is
// its start, and taken off.

#include <benchmark/benchmark.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "fonts/outline_forms.h"
#include "fonts/type1_program.h"
#include "vaskel/fonts.h"

namespace {

using Fonts::Type1Font;
using Fonts::Type1Program;

constexpr int kGlyphs = 224;

// Glyphs of so many curves each, as the letters of a text face have 10 to 60.
void drawCurves(Type1Font& font, std::int64_t curves) {
    for (int code = 32; code < 32 + kGlyphs; ++code) {
        const auto c = static_cast<unsigned char>(code);
        font.setCharWidth(c, 400 + code);
        font.addChar(c, "");
        Fonts::Type1Glyph& glyph = *font.editChar(c);
        glyph.moveTo(100, 100);
        for (std::int64_t i = 0; i < curves; ++i) {
            const int x = static_cast<int>(i * 37 % 900), y = static_cast<int>(i * 91 % 1400) - 300;
            glyph.curveTo(x, y, x + 40, y + 130, x + 200, y + code);
        }
        glyph.closePath();
    }
}

// The outlines of Latin, Greek and Cyrillic letters of DejaVu Sans in 1/1000 em,
// with quadratic curves as the cubic ones that they equal.
struct Step {
    enum { kMove, kLine, kCurve, kClose } what;
    struct {
        int x, y;
    } points[3];

    Step(decltype(what) command, std::initializer_list<FT_Vector> at) : what(command), points{} {
        std::size_t i = 0;
        for (const FT_Vector& point : at)  // from 64th of a unit
            points[i++] = {static_cast<int>(point.x / 64), static_cast<int>(point.y / 64)};
    }
};
using Outline = std::vector<Step>;

struct Drawing {
    Outline steps;
    FT_Vector at = {};
    bool open = false;
};

void close(Drawing& drawing) {
    if (drawing.open) drawing.steps.push_back({Step::kClose, {}});
    drawing.open = false;
}

FT_Vector between(const FT_Vector& from, const FT_Vector& to) {  // two thirds of the way
    return {(from.x + 2 * to.x) / 3, (from.y + 2 * to.y) / 3};
}

constexpr FT_Outline_Funcs kDraw = {
    [](const FT_Vector* to, void* user) {
        auto& drawing = *static_cast<Drawing*>(user);
        close(drawing);
        drawing.steps.push_back({Step::kMove, {*to}});
        drawing.at = *to;
        drawing.open = true;
        return 0;
    },
    [](const FT_Vector* to, void* user) {
        auto& drawing = *static_cast<Drawing*>(user);
        drawing.steps.push_back({Step::kLine, {*to}});
        drawing.at = *to;
        return 0;
    },
    [](const FT_Vector* by, const FT_Vector* to, void* user) {
        auto& drawing = *static_cast<Drawing*>(user);
        drawing.steps.push_back({Step::kCurve, {between(drawing.at, *by), between(*to, *by), *to}});
        drawing.at = *to;
        return 0;
    },
    [](const FT_Vector* by1, const FT_Vector* by2, const FT_Vector* to, void* user) {
        auto& drawing = *static_cast<Drawing*>(user);
        drawing.steps.push_back({Step::kCurve, {*by1, *by2, *to}});
        drawing.at = *to;
        return 0;
    },
    0,
    0};

std::vector<Outline> realOutlines() {
    std::vector<Outline> all;
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    if (FT_Init_FreeType(&library) != 0) return all;
    if (FT_New_Face(library, "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", 0, &face) == 0) {
        FT_Set_Pixel_Sizes(face, 0, 1000);
        for (FT_ULong code = 0x21; all.size() < 256 && code < 0x500; ++code) {
            const FT_UInt index = FT_Get_Char_Index(face, code);
            Drawing drawing;
            if (index == 0 || FT_Load_Glyph(face, index, FT_LOAD_NO_HINTING) != 0) continue;
            if (FT_Outline_Decompose(&face->glyph->outline, &kDraw, &drawing) != 0) continue;
            close(drawing);
            if (!drawing.steps.empty()) all.push_back(std::move(drawing.steps));
        }
        FT_Done_Face(face);
    }
    FT_Done_FreeType(library);
    return all;
}

template <class Glyph>
void drawOutline(Glyph& glyph, const Outline& outline) {
    for (const Step& step : outline) {
        const auto& p = step.points;
        if (step.what == Step::kMove) glyph.moveTo(p[0].x, p[0].y);
        if (step.what == Step::kLine) glyph.lineTo(p[0].x, p[0].y);
        if (step.what == Step::kClose) glyph.closePath();
        if (step.what == Step::kCurve)
            glyph.curveTo(p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
    }
}

void drawReal(Type1Font& font, const std::vector<Outline>& outlines) {
    for (std::size_t i = 0; i < outlines.size(); ++i) {
        const auto c = static_cast<unsigned char>(i);
        font.setCharWidth(c, 600);
        font.addChar(c, "g" + std::to_string(i));
        drawOutline(*font.editChar(c), outlines[i]);
    }
}

// Drawing and assembling, from outlines to the font's bytes.
void realFont(benchmark::State& state) {
    const std::vector<Outline> outlines = realOutlines();
    if (outlines.size() != 256) return state.SkipWithError("fonts-dejavu-core is not installed");
    for (auto _ : state) {
        Type1Font font("Bench");
        drawReal(font, outlines);
        benchmark::DoNotOptimize(font.getData().data());
    }
    state.SetItemsProcessed(state.iterations() * 256);
}

void drawing(benchmark::State& state) {
    for (auto _ : state) {
        Type1Font font("Bench");
        drawCurves(font, state.range(0));
        benchmark::DoNotOptimize(font);
    }
    state.SetItemsProcessed(state.iterations() * kGlyphs * state.range(0));
}

void embeddingForm(benchmark::State& state) {
    Type1Font font("Bench");
    drawCurves(font, state.range(0));
    for (auto _ : state) {
        font.editChar(0);
        benchmark::DoNotOptimize(font.getData().data());
    }
    state.SetBytesProcessed(state.iterations() * font.getLength());
}

// form: which of the forms of encoding, the best one if it is negative.
template <int form>
void privatePart(benchmark::State& state) {
    const auto forms = Fonts::outlineForms();
    if (form >= static_cast<int>(forms.size())) return state.SkipWithError("not for this CPU");
    Fonts::forceOutlineForm(form < 0 ? nullptr : &forms[static_cast<std::size_t>(form)]);
    Type1Font font("Bench");
    drawCurves(font, state.range(0));
    const Type1Program program(font);
    for (auto _ : state) benchmark::DoNotOptimize(program.makePrivate().bytes.get());
    Fonts::forceOutlineForm(nullptr);
    state.SetBytesProcessed(state.iterations() * font.getCharProcsLength());
}

void privatePlain(benchmark::State& state) {
    Type1Font font("Bench");
    drawCurves(font, state.range(0));
    const Type1Program program(font);
    Type1Program::Bytes bytes;
    for (auto _ : state) {
        bytes.clear();
        program.appendPrivatePlain(bytes);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

// A font's disassembly in a folder of its own, and t1asm at work on it.
class Assembly {
 public:
    explicit Assembly(const Type1Font& font) {
        namespace fs = std::filesystem;
        mPlace = (fs::temp_directory_path() / "type1_bench_XXXXXX").string();
        if (!mkdtemp(mPlace.data())) return;
        const std::string text = mPlace + "/text", out = mPlace + "/out";
        std::FILE* const pipe = popen(("t1disasm - " + text + " 2>" + out).c_str(), "w");
        const std::vector<unsigned char>& data = font.getData();
        if (pipe) std::fwrite(data.data(), 1, data.size(), pipe);
        if (pipe && pclose(pipe) == 0) mCommand = "t1asm --pfb " + text + " " + out;
    }
    ~Assembly() { std::filesystem::remove_all(mPlace); }
    Assembly(const Assembly&) = delete;
    Assembly& operator=(const Assembly&) = delete;

    /// Seconds of processor time that t1asm took, negative when there is none.
    double run() const {
        const double before = secondsOfChildren();
        if (mCommand.empty() || std::system(mCommand.c_str()) != 0) return -1;
        return secondsOfChildren() - before;
    }

 private:
    static double secondsOfChildren() {
        rusage usage;
        getrusage(RUSAGE_CHILDREN, &usage);
        const auto seconds = [](const timeval& t) {
            return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

    std::string mPlace, mCommand;
};

double secondsToStart() {
    const Assembly empty{Type1Font("Empty")};
    std::vector<double> times;
    for (int i = 0; i < 15; ++i) times.push_back(empty.run());
    std::nth_element(times.begin(), times.begin() + 7, times.end());
    return times[7];
}

void t1asm(benchmark::State& state, const Type1Font& font) {
    const double start = secondsToStart();
    const Assembly assembly(font);
    for (auto _ : state) {
        const double seconds = assembly.run();
        if (start < 0 || seconds < 0) return state.SkipWithError("t1utils is not installed");
        state.SetIterationTime(std::max(seconds - start, 1e-6));
    }
    state.SetBytesProcessed(state.iterations() * font.getLength());
}

void t1asmReal(benchmark::State& state) {
    Type1Font font("Bench");
    drawReal(font, realOutlines());
    t1asm(state, font);
}

// A glyph that takes note of the points that it is given, and of nothing else.
struct BareGlyph {
    int at[6] = {};
    [[gnu::noinline]] void moveTo(int x, int y) { note(x, y, 0); }
    [[gnu::noinline]] void lineTo(int x, int y) { note(x, y, 0); }
    [[gnu::noinline]] void curveTo(int x1, int y1, int x2, int y2, int x3, int y3) {
        note(x1, y1, 0), note(x2, y2, 2), note(x3, y3, 4);
    }
    [[gnu::noinline]] void closePath() { benchmark::ClobberMemory(); }
    void note(int x, int y, int place) {
        at[place] = x;
        at[place + 1] = y;
        benchmark::ClobberMemory();
    }
};

// As many bytes as the real font's private part, each in need of the key that the
// one before left.
void chainKeys(const Type1Program::Bytes& plain, Type1Program::Bytes& cipher) {
    std::uint32_t key = 55665u << 16;
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const std::uint32_t byte = plain[i] ^ (key >> 24);
        key = byte * (52845u << 16) + (key * 52845u + (22719u << 16));
        cipher[i] = static_cast<unsigned char>(byte);
    }
    benchmark::DoNotOptimize(cipher.data());
    benchmark::ClobberMemory();
}

// The calls for the real outlines, and the keys, and nothing else.
void callsAndKeys(benchmark::State& state) {
    const std::vector<Outline> outlines = realOutlines();
    Type1Font font("Bench");
    drawReal(font, outlines);
    const Type1Program::Bytes plain(static_cast<std::size_t>(font.getCharProcsLength()), 'p');
    Type1Program::Bytes cipher(plain.size());
    for (auto _ : state) {
        for (const Outline& outline : outlines) {
            BareGlyph glyph;
            drawOutline(glyph, outline);
            benchmark::DoNotOptimize(&glyph);
        }
        chainKeys(plain, cipher);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(plain.size()));
}

void t1asmInvented(benchmark::State& state) {
    Type1Font font("Bench");
    drawCurves(font, state.range(0));
    t1asm(state, font);
}

BENCHMARK(drawing)->Name("draw/vaskel")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(embeddingForm)->Name("assemble/vaskel")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(privatePart<-1>)->Name("private_part/vaskel")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(privatePart<1>)->Name("private_part/vaskel_sse2")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(privatePlain)->Name("private_part/vaskel_plain")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(t1asmInvented)->Name("assemble/t1asm")->Arg(10)->Arg(40)->Arg(1000)->UseManualTime();
BENCHMARK(realFont)->Name("real_glyphs/vaskel/256");
BENCHMARK(t1asmReal)->Name("real_glyphs/t1asm/256")->UseManualTime();
BENCHMARK(callsAndKeys)->Name("real_glyphs/least_calls_and_keys/256");

}  // namespace

BENCHMARK_MAIN();
