// 24 megapixels of CMYK to blue, green, red: the library's ink model beside
// Little CMS with a press profile, whose default 8-bit transform is its fastest.

#include <benchmark/benchmark.h>
#include <lcms2.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "colour/ink_run.h"

namespace {

constexpr int kCount = 24000000;

const std::vector<unsigned char>& image() {
    static const std::vector<unsigned char> made = [] {
        std::vector<unsigned char> pixels(4 * std::size_t{kCount});
        std::mt19937 random(24);
        for (std::size_t i = 0; i < pixels.size(); i += 4) {
            const auto inks = static_cast<std::uint32_t>(random());
            std::memcpy(&pixels[i], &inks, 4);
        }
        return pixels;
    }();
    return made;
}

void ours(benchmark::State& state, void (*run)(unsigned char*, int)) {
    std::vector<unsigned char> pixels;
    for (auto _ : state) {
        state.PauseTiming();
        pixels = image();  // the run works in place
        state.ResumeTiming();
        run(pixels.data(), kCount);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void moveBytes(benchmark::State& state) {
    const std::vector<unsigned char>& pixels = image();
    std::vector<unsigned char> out(pixels.size());
    for (auto _ : state) {
        std::memcpy(out.data(), pixels.data(), pixels.size());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void littleCms(benchmark::State& state) {
    const std::vector<unsigned char>& pixels = image();
    const cmsHPROFILE press =
        cmsOpenProfileFromFile(VASKEL_SAMPLE_DATA "/FOGRA39L_coated.icc", "r");
    const cmsHPROFILE screen = cmsCreate_sRGBProfile();
    const cmsHTRANSFORM transform =
        cmsCreateTransform(press, TYPE_CMYK_8, screen, TYPE_BGRA_8, INTENT_PERCEPTUAL, 0);
    if (!transform) return state.SkipWithError("no transform");
    std::vector<unsigned char> out(pixels.size());
    for (auto _ : state) {
        cmsDoTransform(transform, pixels.data(), out.data(), kCount);
        benchmark::ClobberMemory();
    }
    cmsDeleteTransform(transform);
    cmsCloseProfile(press);
    cmsCloseProfile(screen);
    state.SetItemsProcessed(state.iterations() * kCount);
}

}  // namespace

int main(int argc, char** argv) {
    const auto work = [](const char* name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name, function, arguments...)->Unit(benchmark::kMillisecond);
    };
    work("ink_run/vaskel", ours, Vaskel::inkRunForms().back().run);
    for (const Vaskel::InkRunForm& form : Vaskel::inkRunForms().subspan(2))
        work(("ink_run/vaskel_" + std::string(form.name)).c_str(), ours, form.run);
    work("ink_run/vaskel_table", ours, Vaskel::inkRunTable);
    work("ink_run/vaskel_plain", ours, Vaskel::inkRunPlain);
    work("ink_run/least_memcpy", moveBytes);
    work("ink_run/lcms2", littleCms);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
