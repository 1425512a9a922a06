// Peers that give an image another size: libvips, libswscale, zimg and stb, each
// on one thread. OpenCV's one call stands in the benchmarks themselves.

#ifndef BENCH_SUPPORT_SCALERS_H
#define BENCH_SUPPORT_SCALERS_H

#include <functional>
#include <vector>

namespace Bench {

/// An image of 1 or 4 bytes a pixel and the size that it gets.
struct ScalingTask {
    const void* pixels;
    int width, height, channels;
    int newWidth, newHeight;
    bool averaging;  // else the nearest pixel
    // Where it goes, with room for kBesides pixels behind each line; only vips takes
    // memory of its own, as its calls have it.
    unsigned char* result;
    static constexpr int kBesides = 16;
};

struct Scaler {
    const char* name;
    /// Whether it works on threads of its own, so that the whole process has to
    /// be timed.
    bool threads;
    /// Sets the work up; the function returned does it. Null where the peer has
    /// no such operation.
    std::function<void()> (*prepare)(const ScalingTask& task);
};

/// Those that are installed.
const std::vector<Scaler>& scalers();

}  // namespace Bench

#endif
