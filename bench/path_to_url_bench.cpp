// URLs of paths, beside the peers' ways from a file name to a URL. Theirs
// encode every component alike and take absolute file names only.

#include <benchmark/benchmark.h>
#include <uriparser/Uri.h>

#include <string>
#include <vector>

#include "vaskel/encoding.h"

#if VASKEL_BENCH_GLIB
#include <glib.h>
#endif

namespace {

// A path of so many components.
std::string path(benchmark::State& state) {
    std::string made = "/volume";
    for (std::int64_t i = 1; i < state.range(0); ++i) made += i % 2 ? "/a folder" : "/documents";
    return made;
}

void vaskel(benchmark::State& state) {
    const std::string from = path(state), scheme = "file";
    Orlune::FileSpecURL url;
    for (auto _ : state) {
        Vaskel::PathToURL(from, scheme, url);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(vaskel)->Name("path_to_url/vaskel")->RangeMultiplier(10)->Range(10, 100000);

void uriparser(benchmark::State& state) {
    const std::string from = path(state);
    std::vector<char> text(8 + 3 * from.size());
    Orlune::FileSpecURL url;
    for (auto _ : state) {
        uriUnixFilenameToUriStringA(from.c_str(), text.data());
        url = text.data();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(uriparser)->Name("path_to_url/uriparser")->RangeMultiplier(10)->Range(10, 100000);

#if VASKEL_BENCH_GLIB
void glib(benchmark::State& state) {
    const std::string from = path(state);
    Orlune::FileSpecURL url;
    for (auto _ : state) {
        gchar* const text = g_filename_to_uri(from.c_str(), nullptr, nullptr);
        url = text;
        g_free(text);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(glib)->Name("path_to_url/glib")->RangeMultiplier(10)->Range(10, 100000);
#endif

}  // namespace

BENCHMARK_MAIN();
