// Assembling fonts of many sizes: the form that fonts use beside the plain one
// and, where installed, t1asm of t1utils, which encrypts the same charstrings
// from their disassembly. t1asm is a process; its start is in its time, which
// is why the sizes go up to a font far larger than any real one.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

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

template <std::size_t (Type1Program::*append)(Type1Program::Bytes&) const>
void privatePart(benchmark::State& state) {
    Type1Font font("Bench");
    drawCurves(font, state.range(0));
    const Type1Program program(font);
    Type1Program::Bytes bytes;
    for (auto _ : state) {
        bytes.clear();
        (program.*append)(bytes);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
void privatePlain(benchmark::State& state) {
    privatePart<&Type1Program::appendPrivatePlain>(state);
}
void privateFast(benchmark::State& state) { privatePart<&Type1Program::appendPrivate>(state); }

void t1asm(benchmark::State& state) {
    Type1Font font("Bench");
    drawCurves(font, state.range(0));
    namespace fs = std::filesystem;
    std::string place = (fs::temp_directory_path() / "type1_bench_XXXXXX").string();
    if (!mkdtemp(place.data())) return state.SkipWithError("no temporary folder");
    const std::string text = place + "/text", out = place + "/out";
    std::FILE* const pipe = popen(("t1disasm - " + text + " 2>" + out).c_str(), "w");
    const std::vector<unsigned char>& data = font.getData();
    if (pipe) std::fwrite(data.data(), 1, data.size(), pipe);
    if (!pipe || pclose(pipe) != 0) {
        state.SkipWithError("t1utils is not installed");
    } else {
        const std::string command = "t1asm --pfb " + text + " " + out;
        for (auto _ : state)
            if (std::system(command.c_str()) != 0) state.SkipWithError("t1asm failed");
        state.SetBytesProcessed(state.iterations() * font.getLength());
    }
    fs::remove_all(place);
}

BENCHMARK(drawing)->Name("draw/vaskel")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(embeddingForm)->Name("assemble/vaskel")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(privateFast)->Name("private_part/vaskel")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(privatePlain)->Name("private_part/vaskel_plain")->Arg(10)->Arg(40)->Arg(1000);
BENCHMARK(t1asm)->Name("assemble/t1asm")->Arg(10)->Arg(40)->Arg(1000)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
