// ASCII85 streams: the engine beside the virtual calls that its interface asks
// for and nothing else, the same where the bytes decide how many calls there are
// ("least_deciding"), the format's plainest loop and, where installed,
// GraphicsMagick's encoder, which also takes byte by byte, and PoDoFo's filter,
// which takes blocks. All write into memory that has room.

#include <benchmark/benchmark.h>

#if VASKEL_BENCH_PODOFO
#include <podofo/base/PdfFilter.h>
#include <podofo/base/PdfOutputStream.h>
#endif

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/bare_stream.h"
#include "vaskel/encoding.h"

#if VASKEL_BENCH_MAGICK
#include <magick/api.h>
#include <magick/blob.h>
#include <magick/compress.h>
#endif

namespace {

using Bytes = std::vector<unsigned char>;

// zeros is how many of a hundred groups of four are zero.
Bytes input(std::int64_t size, std::int64_t zeros) {
    std::mt19937 random(85);
    Bytes bytes(static_cast<std::size_t>(size));
    for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4)
        if (static_cast<std::int64_t>(random() % 100) >= zeros)
            for (std::size_t k = 0; k < 4; ++k) bytes[i + k] = static_cast<unsigned char>(random());
    return bytes;
}

// Memory that was written before: none of the loops pays for its first pages.
std::string room(std::int64_t size) { return std::string(static_cast<std::size_t>(2 * size), ' '); }

struct Sink final : Vaskel::ascii85out_base {
    std::string text;
    void putuns8(unsigned char c) override { text.push_back(static_cast<char>(c)); }
};

void engine(benchmark::State& state) {
    const Bytes bytes = input(state.range(0), state.range(1));
    Sink sink;
    sink.text = room(state.range(0));
    for (auto _ : state) {
        sink.text.clear();
        Vaskel::ascii85out_base& stream = sink;
        benchmark::DoNotOptimize(&stream);
        for (const unsigned char c : bytes) stream.encode(c);
        benchmark::DoNotOptimize(sink.text.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

template <class Stream>
struct BareSink final : Stream {
    std::string text;
    void putuns8(unsigned char c) override { text.push_back(static_cast<char>(c)); }
    void finish() override {}
};

template <class Stream>
void bareCalls(benchmark::State& state) {
    const Bytes bytes = input(state.range(0), state.range(1));
    Sink once;
    Bytes lengths;
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const std::size_t before = once.text.size();
        for (std::size_t k = 0; k < 4; ++k) once.encode(bytes[i + k]);
        lengths.push_back(static_cast<unsigned char>(once.text.size() - before));
    }
    BareSink<Stream> sink;
    sink.text = room(state.range(0));
    for (auto _ : state) {
        sink.text.clear();
        sink.start(once.text.data(), lengths.data());
        Bench::BareStream& stream = sink;
        benchmark::DoNotOptimize(&stream);
        for (const unsigned char c : bytes) stream.encode(c);
        benchmark::DoNotOptimize(sink.text.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

// Whole groups, no calls, no stream to continue: what the arithmetic costs.
void plainLoop(benchmark::State& state) {
    const Bytes bytes = input(state.range(0), state.range(1));
    std::string text = room(state.range(0));
    for (auto _ : state) {
        text.clear();
        int column = 0;
        const auto put = [&](char c) {
            text.push_back(c);
            if (++column == 100) text.push_back('\n'), column = 0;
        };
        for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4) {
            const std::uint32_t v = std::uint32_t{bytes[i]} << 24 |
                                    std::uint32_t{bytes[i + 1]} << 16 |
                                    std::uint32_t{bytes[i + 2]} << 8 | bytes[i + 3];
            if (v == 0) {
                put('z');
                continue;
            }
            for (const std::uint32_t power : {52200625u, 614125u, 7225u, 85u, 1u})
                put(static_cast<char>('!' + v / power % 85));
        }
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

#if VASKEL_BENCH_MAGICK
void graphicsMagick(benchmark::State& state) {
    const Bytes bytes = input(state.range(0), state.range(1));
    InitializeMagick(nullptr);
    ImageInfo* const info = CloneImageInfo(nullptr);
    Image* const image = AllocateImage(info);
    ExceptionInfo exception;
    GetExceptionInfo(&exception);
    info->length = 2 * bytes.size();
    info->blob = static_cast<BlobInfo*>(std::malloc(info->length));
    if (!OpenBlob(info, image, WriteBinaryBlobMode, &exception)) state.SkipWithError("no blob");
    for (auto _ : state) {
        SeekBlob(image, 0, SEEK_SET);
        Ascii85Initialize(image);
        for (const unsigned char c : bytes) Ascii85Encode(image, c);
        benchmark::DoNotOptimize(GetBlobStreamData(image));
    }
    CloseBlob(image);
    DestroyImage(image);
    std::free(std::exchange(info->blob, nullptr));
    DestroyImageInfo(info);
    DestroyExceptionInfo(&exception);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
#endif

#if VASKEL_BENCH_PODOFO
struct TextStream final : PoDoFo::PdfOutputStream {
    std::string text;
    PoDoFo::pdf_long Write(const char* bytes, PoDoFo::pdf_long count) override {
        text.append(bytes, static_cast<std::size_t>(count));
        return count;
    }
    void Close() override {}
};

void podofo(benchmark::State& state) {
    const Bytes bytes = input(state.range(0), state.range(1));
    TextStream out;
    out.text = room(state.range(0));
    const auto filter = PoDoFo::PdfFilterFactory::Create(PoDoFo::ePdfFilter_ASCII85Decode);
    for (auto _ : state) {
        out.text.clear();
        filter->BeginEncode(&out);
        filter->EncodeBlock(reinterpret_cast<const char*>(bytes.data()), state.range(0));
        filter->EndEncode();
        benchmark::DoNotOptimize(out.text.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
#endif

void sizes(benchmark::internal::Benchmark* bench) {
    for (const std::int64_t size : {4096, 65536, 1048576}) bench->Args({size, 0});
    bench->Args({65536, 50});
}
BENCHMARK(engine)->Name("ascii85/vaskel")->Apply(sizes);
BENCHMARK(bareCalls<Bench::BareStream>)->Name("ascii85/bare_calls")->Apply(sizes);
BENCHMARK(bareCalls<Bench::DecidingStream>)->Name("ascii85/least_deciding")->Apply(sizes);
BENCHMARK(plainLoop)->Name("ascii85/vaskel_loop_without_calls")->Apply(sizes);
#if VASKEL_BENCH_MAGICK
BENCHMARK(graphicsMagick)->Name("ascii85/graphicsmagick")->Apply(sizes);
#endif
#if VASKEL_BENCH_PODOFO
BENCHMARK(podofo)->Name("ascii85/podofo")->Apply(sizes);
#endif

}  // namespace

BENCHMARK_MAIN();
