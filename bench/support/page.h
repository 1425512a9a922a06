// A bilevel page for benchmarks, made from a seed: lines of letter-like shapes
// and a halftone, as a scan at 600 dpi shows them.

#ifndef BENCH_SUPPORT_PAGE_H
#define BENCH_SUPPORT_PAGE_H

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

/// width x height pixels, one byte each, 1 where set.
struct Page {
    int width, height;
    std::vector<std::uint8_t> pixels;

    Page(int w, int h)
        : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}

    std::uint8_t* line(int y) {
        return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
    const std::uint8_t* line(int y) const { return const_cast<Page*>(this)->line(y); }
};

/// The positions of all lines in a row, each line ended by a terminator, and
/// where each line begins.
struct PageRuns {
    std::vector<int> positions;
    std::vector<std::size_t> begin;
    std::int64_t boundaries = 0;
};

namespace page {

// A letter: a few strokes of a pen, each an arc or a bar, in a cell of 60 x 84
// pixels whose edges are a little rough.
struct Letter {
    static constexpr int kWidth = 60;
    static constexpr int kHeight = 84;
    std::vector<std::uint8_t> pixels;

    explicit Letter(std::mt19937& random) : pixels(kWidth * kHeight) {
        const auto uniform = [&](double low, double high) {
            return low + (high - low) * (static_cast<double>(random()) / 4294967296.0);
        };
        const double pen = uniform(3.5, 5.5);
        const auto strokes = 1 + random() % 3;
        for (unsigned s = 0; s < strokes; ++s) {
            const bool bar = random() % 2 == 0;
            const double x = uniform(12, 34), y = uniform(28, 50), r = uniform(12, 22);
            const double from = uniform(0, 6.28), sweep = uniform(3, 6.28);
            for (double t = 0; t <= 1; t += 0.005) {
                const double px = bar ? x + uniform(-0.2, 0.2) : x + r * std::cos(from + sweep * t);
                const double py = bar ? 8 + 64 * t : y + r * std::sin(from + sweep * t);
                dot(px, py, pen + uniform(-0.3, 0.3));
            }
        }
    }

    void dot(double x, double y, double radius) {
        for (int v = std::max(0, static_cast<int>(y - radius));
             v <= std::min(kHeight - 1, static_cast<int>(y + radius)); ++v)
            for (int u = std::max(0, static_cast<int>(x - radius));
                 u <= std::min(kWidth - 1, static_cast<int>(x + radius)); ++u)
                if ((u - x) * (u - x) + (v - y) * (v - y) <= radius * radius)
                    pixels[static_cast<std::size_t>(v * kWidth + u)] = 1;
    }
};

}  // namespace page

/// A page of text with a halftone of a tenth of its area in the lower right.
inline Page makePage(int width, int height, std::uint32_t seed = 20240607) {
    std::mt19937 random(seed);
    Page page(width, height);
    std::vector<page::Letter> alphabet;
    for (int i = 0; i < 60; ++i) alphabet.emplace_back(random);

    const int margin = width / 12;
    const int halftoneX = width * 55 / 100, halftoneY = height * 70 / 100;
    const int halftoneW = width * 35 / 100, halftoneH = height * 24 / 100;
    using page::Letter;
    for (int y = margin; y + Letter::kHeight < height - margin; y += 100)
        for (int x = margin; x + Letter::kWidth < width - margin; x += 44) {
            if (random() % 6 == 0) continue;  // between words
            const Letter& letter = alphabet[random() % alphabet.size()];
            if (x + Letter::kWidth > halftoneX && y + Letter::kHeight > halftoneY) continue;
            for (int v = 0; v < Letter::kHeight; ++v)
                for (int u = 0; u < Letter::kWidth; ++u)
                    page.line(y + v)[x + u] |=
                        letter.pixels[static_cast<std::size_t>(v * Letter::kWidth + u)];
        }

    // Round dots on a screen of 106 lines an inch at 45 degrees, from light to
    // dark.
    for (int v = 0; v < halftoneH; ++v)
        for (int u = 0; u < halftoneW; ++u) {
            const double a = (u + v) * (6.28318 / 8), b = (u - v) * (6.28318 / 8);
            const double threshold = (std::cos(a) + std::cos(b)) / 4 + 0.5;
            const double noise = static_cast<double>(random() & 255) / 255.0 * 0.06;
            if (threshold + noise < (u + 0.05 * halftoneW) / (1.1 * halftoneW))
                page.line(halftoneY + v)[halftoneX + u] = 1;
        }
    return page;
}

/// Writes where a line of bytes changes, with the terminator; returns how many
/// positions these are.
inline int writeRuns(const std::uint8_t* pixels, int width, int* runs) {
    int count = 0;
    std::uint8_t last = 0;
    for (int x = 0; x < width; ++x)
        if (pixels[x] != last) {
            runs[count++] = x;
            last = pixels[x];
        }
    if (last != 0) runs[count++] = width;
    runs[count] = INT_MAX;
    return count;
}

inline PageRuns runsOf(const Page& page) {
    PageRuns runs;
    std::vector<int> line(static_cast<std::size_t>(page.width) + 2);
    for (int y = 0; y < page.height; ++y) {
        const int count = writeRuns(page.line(y), page.width, line.data());
        runs.begin.push_back(runs.positions.size());
        runs.positions.insert(runs.positions.end(), line.begin(), line.begin() + count + 1);
        runs.boundaries += count;
    }
    runs.begin.push_back(runs.positions.size());
    return runs;
}

#endif
