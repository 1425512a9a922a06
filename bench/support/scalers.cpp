#include "bench/support/scalers.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#if VASKEL_BENCH_VIPS
#include <vips/vips.h>
#endif
#if VASKEL_BENCH_SWSCALE
extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}
#endif
#if VASKEL_BENCH_ZIMG
#include <zimg.h>
#endif
#if VASKEL_BENCH_STB
#include <stb_image_resize.h>
#endif

namespace Bench {
namespace {

using Work = std::function<void()>;

std::size_t sizeOf(int width, int height, int channels) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           static_cast<std::size_t>(channels);
}

#if VASKEL_BENCH_VIPS
// What vips averages with: blocks of whole pixels for whole factors, else its
// reducing filter with the triangle, its nearest to an average of areas.
VipsImage* vipsScaled(VipsImage* in, const ScalingTask& task) {
    const double x = static_cast<double>(task.width) / task.newWidth;
    const double y = static_cast<double>(task.height) / task.newHeight;
    VipsImage* out = nullptr;
    int error = 0;
    if (x < 1) {
        const int zoom = task.newWidth / task.width;
        error = task.newWidth % task.width == 0
                    ? vips_zoom(in, &out, zoom, zoom, nullptr)
                    : vips_resize(in, &out, 1 / x, "vscale", 1 / y, "kernel", VIPS_KERNEL_NEAREST,
                                  nullptr);
    } else if (!task.averaging) {
        error = vips_reduce(in, &out, x, y, "kernel", VIPS_KERNEL_NEAREST, nullptr);
    } else if (x == std::floor(x)) {
        error = vips_shrink(in, &out, x, y, nullptr);
    } else {
        error = vips_reduce(in, &out, x, y, "kernel", VIPS_KERNEL_LINEAR, nullptr);
    }
    return error == 0 ? out : nullptr;
}

Work vips(const ScalingTask& task) {
    static const bool started = [] {
        if (vips_init("bench") != 0) return false;
        vips_concurrency_set(1);
        vips_cache_set_max(0);  // or the second run would do nothing
        return true;
    }();
    if (!started) return {};
    return [task] {
        VipsImage* const in =
            vips_image_new_from_memory(task.pixels, sizeOf(task.width, task.height, task.channels),
                                       task.width, task.height, task.channels, VIPS_FORMAT_UCHAR);
        VipsImage* const out = vipsScaled(in, task);
        std::size_t size = 0;
        if (out) g_free(vips_image_write_to_memory(out, &size));
        if (out) g_object_unref(out);
        g_object_unref(in);
    };
}
#endif

#if VASKEL_BENCH_SWSCALE
// Blue, green, red and a fourth byte that is copied, or grey.
Work swscale(const ScalingTask& task) {
    const AVPixelFormat format = task.channels == 4 ? AV_PIX_FMT_BGR0 : AV_PIX_FMT_GRAY8;
    const std::shared_ptr<SwsContext> context(
        sws_getContext(task.width, task.height, format, task.newWidth, task.newHeight, format,
                       task.averaging ? SWS_AREA : SWS_POINT, nullptr, nullptr, nullptr),
        sws_freeContext);
    if (!context) return {};
    return [=] {
        const std::uint8_t* const from[4] = {static_cast<const std::uint8_t*>(task.pixels)};
        const int fromStride[4] = {task.width * task.channels};
        std::uint8_t* const to[4] = {task.result};
        const int toStride[4] = {(task.newWidth + ScalingTask::kBesides) * task.channels};
        sws_scale(context.get(), from, fromStride, 0, task.height, to, toStride);
    };
}
#endif

#if VASKEL_BENCH_ZIMG
// zimg takes planes only, with rows of whole blocks of 64 bytes. Pixels are taken
// apart and put together around it, which is part of the work; single bytes are a
// plane already.
struct Planes {
    Planes(int w, int h, int n)
        : width(w),
          height(h),
          channels(n),
          stride((w + 63) / 64 * 64),
          memory(static_cast<std::uint8_t*>(std::aligned_alloc(64, sizeOf(stride, h, n)))) {}
    ~Planes() { std::free(memory); }
    Planes(const Planes&) = delete;
    Planes& operator=(const Planes&) = delete;

    std::uint8_t* row(int c, int y) const {
        return memory + sizeOf(stride, height, c) + sizeOf(stride, y, 1);
    }
    void takeApart(const std::uint8_t* pixels) {
        for (int y = 0; y < height; ++y, pixels += sizeOf(width, 1, channels)) {
            if (channels == 1)
                std::memcpy(row(0, y), pixels, static_cast<std::size_t>(width));
            else
                split(pixels, row(0, y), row(1, y), row(2, y), row(3, y));
        }
    }
    void putTogether(std::uint8_t* pixels) const {
        for (int y = 0; y < height; ++y, pixels += sizeOf(width, 1, channels))
            join(pixels, row(0, y), row(1, y), row(2, y), row(3, y));
    }
    // Written so that the compiler makes vectors of it.
    void split(const std::uint8_t* pixels, std::uint8_t* __restrict p0, std::uint8_t* __restrict p1,
               std::uint8_t* __restrict p2, std::uint8_t* __restrict p3) const {
        for (int x = 0; x < width; ++x) {
            std::uint32_t pixel;
            std::memcpy(&pixel, pixels + 4 * x, 4);
            p0[x] = static_cast<std::uint8_t>(pixel);
            p1[x] = static_cast<std::uint8_t>(pixel >> 8);
            p2[x] = static_cast<std::uint8_t>(pixel >> 16);
            p3[x] = static_cast<std::uint8_t>(pixel >> 24);
        }
    }
    void join(std::uint8_t* __restrict pixels, const std::uint8_t* p0, const std::uint8_t* p1,
              const std::uint8_t* p2, const std::uint8_t* p3) const {
        for (int x = 0; x < width; ++x) {
            const std::uint32_t pixel = std::uint32_t{p0[x]} | std::uint32_t{p1[x]} << 8 |
                                        std::uint32_t{p2[x]} << 16 | std::uint32_t{p3[x]} << 24;
            std::memcpy(pixels + 4 * x, &pixel, 4);
        }
    }

    int width, height, channels, stride;
    std::uint8_t* memory;
};

Work zimg(const ScalingTask& task) {
    zimg_image_format in, out;
    zimg_image_format_default(&in, ZIMG_API_VERSION);
    in.pixel_type = ZIMG_PIXEL_BYTE;
    in.color_family = ZIMG_COLOR_GREY;
    in.width = static_cast<unsigned>(task.width);
    in.height = static_cast<unsigned>(task.height);
    out = in;
    out.width = static_cast<unsigned>(task.newWidth);
    out.height = static_cast<unsigned>(task.newHeight);
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.resample_filter = task.averaging ? ZIMG_RESIZE_BILINEAR : ZIMG_RESIZE_POINT;
    const std::shared_ptr<zimg_filter_graph> graph(zimg_filter_graph_build(&in, &out, &parameters),
                                                   zimg_filter_graph_free);
    std::size_t temporary = 0;
    if (!graph || zimg_filter_graph_get_tmp_size(graph.get(), &temporary) != 0) return {};
    const auto from = std::make_shared<Planes>(task.width, task.height, task.channels);
    const auto to = std::make_shared<Planes>(task.newWidth, task.newHeight, task.channels);
    const auto work = std::make_shared<Planes>(static_cast<int>(temporary), 1, 1);
    from->takeApart(static_cast<const std::uint8_t*>(task.pixels));
    return [=] {
        if (task.channels != 1) from->takeApart(static_cast<const std::uint8_t*>(task.pixels));
        for (int c = 0; c < task.channels; ++c) {
            zimg_image_buffer_const source = {};
            source.version = ZIMG_API_VERSION;
            source.plane[0] = {from->row(c, 0), from->stride, ZIMG_BUFFER_MAX};
            zimg_image_buffer target = {};
            target.version = ZIMG_API_VERSION;
            target.plane[0] = {to->row(c, 0), to->stride, ZIMG_BUFFER_MAX};
            zimg_filter_graph_process(graph.get(), &source, &target, work->memory, nullptr, nullptr,
                                      nullptr, nullptr);
        }
        if (task.channels != 1) to->putTogether(task.result);
    };
}
#endif

#if VASKEL_BENCH_STB
Work stb(const ScalingTask& task) {
    if (!task.averaging) return {};
    return [=] {
        stbir_resize_uint8_generic(static_cast<const std::uint8_t*>(task.pixels), task.width,
                                   task.height, 0, task.result, task.newWidth, task.newHeight, 0,
                                   task.channels, STBIR_ALPHA_CHANNEL_NONE, 0, STBIR_EDGE_CLAMP,
                                   STBIR_FILTER_BOX, STBIR_COLORSPACE_LINEAR, nullptr);
    };
}
#endif

}  // namespace

const std::vector<Scaler>& scalers() {
    static const std::vector<Scaler> all = {
#if VASKEL_BENCH_VIPS
        {"vips", true, vips},
#endif
#if VASKEL_BENCH_SWSCALE
        {"swscale", false, swscale},
#endif
#if VASKEL_BENCH_ZIMG
        {"zimg", false, zimg},
#endif
#if VASKEL_BENCH_STB
        {"stb", false, stb},
#endif
    };
    return all;
}

}  // namespace Bench
