// A model of the downsampler that walks every line pixel by pixel, with one float a
// sum: images and any calls between their lines give the same.

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

#include "platform/orlune.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/raster.h"

namespace {

constexpr unsigned kSeed = 94208;

unsigned char byteOf(double value) {
    return value >= 255 ? 255 : value > 0 ? static_cast<unsigned char>(value) : 0;
}

class Model {
 public:
    Model(double factor, unsigned width, unsigned height) : mWidth(width) {
        const auto size = [](double value) { return std::max(1.0, std::ceil(value - 0.00001)); };
        n = static_cast<std::size_t>(size(width / std::max(factor, 1.0)));
        mFactorX = width / static_cast<double>(n);
        mFactorY = height / size(height / mFactorX);
        mLine = std::make_shared<std::vector<unsigned char>>(4 * n);
        mSums = std::make_shared<std::vector<float>>(4 * n + 8);
    }
    std::size_t n;
    bool filtering = true;

    bool ready() const { return mRow >= mFactorY; }
    void stuff(const unsigned char* line, std::size_t channels) {
        mRow += 1;
        if (!filtering) {
            if (ready()) pick(line, channels);
            return;
        }
        if (!ready()) return add(line, channels, 1);
        const double weight = 1 - (mRow - mFactorY);
        add(line, channels, weight);
        means(channels);
        std::fill(mSums->begin(), mSums->end(), 0.0f);
        if (1 - weight != 0) add(line, channels, 1 - weight);
    }
    // As many bytes of a pixel as the caller's line has.
    void get(unsigned char* out, std::size_t bytes) {
        if (!ready()) return;
        mRow -= mFactorY;
        copy(out, bytes);
    }
    void getLast(unsigned char* out, std::size_t bytes) {
        const double cell = mFactorX * mFactorY;
        if (filtering && bytes == 4) means(4);
        if (filtering && bytes == 1)
            for (std::size_t i = 0; i < n; ++i)
                (*mLine)[i] = static_cast<unsigned char>(
                    std::clamp(Orlune::iround((*mSums)[i] / cell), 0, 255));
        copy(out, bytes);
    }

 private:
    void add(const unsigned char* line, std::size_t channels, double weight) {
        double column = 0;
        std::size_t k = 0;
        for (std::size_t i = 0; i < mWidth; ++i) {
            column += 1;
            const bool ends = column >= mFactorX;
            if (ends) column -= mFactorX;
            for (std::size_t c = 0; c < channels; ++c) {
                const unsigned char value = line[channels * i + c];
                const auto addTo = [&](std::size_t cell, double product) {
                    float& sum = (*mSums)[channels * cell + c];
                    sum = static_cast<float>(sum + product);
                };
                if (ends) {
                    addTo(k, (1 - column) * weight * value);
                    addTo(k + 1, column * weight * value);
                } else {
                    addTo(k, weight * value);
                }
            }
            if (ends) ++k;
        }
    }
    void means(std::size_t channels) {
        for (std::size_t i = 0; i < channels * n; ++i)
            (*mLine)[i] = byteOf((*mSums)[i] / (mFactorX * mFactorY) + 0.5);
    }
    void pick(const unsigned char* line, std::size_t bytes) {
        double column = 0;
        const double step = std::trunc(mFactorX);
        std::size_t i = 0;
        for (std::size_t j = 0; j < n && i < mWidth; ++j, i += static_cast<std::size_t>(step)) {
            column += mFactorX - step;
            if (column >= 1) {
                column -= 1;
                ++i;
            }
            std::memset(&(*mLine)[4 * j], 0, 4);
            std::memcpy(&(*mLine)[4 * j], line + bytes * std::min<std::size_t>(i, mWidth - 1),
                        bytes);
        }
    }
    void copy(unsigned char* out, std::size_t bytes) const {
        for (std::size_t i = 0; i < bytes * n; ++i)
            out[i] = (*mLine)[!filtering && bytes == 1 ? 4 * i : i];
    }

    double mFactorX, mFactorY, mRow = 0;
    std::size_t mWidth;
    std::shared_ptr<std::vector<unsigned char>> mLine;
    std::shared_ptr<std::vector<float>> mSums;
};

struct Both {
    Vaskel::downsampler sampler;
    Model model;
    Both(double factor, unsigned width, unsigned height)
        : sampler(factor, 1, width, height), model(factor, width, height) {}
};

double randomFactor(std::mt19937& random) {
    constexpr double factors[] = {2, 2, 2.5, 4, 4.17, 1.5, 3, 10.0 / 3, 1, 1.01, 7.3, 16};
    const auto choice = random() % 16;
    return choice < std::size(factors) ? factors[choice]
                                       : 1 + static_cast<double>(random() % 12000) / 1000;
}

}  // namespace

TEST_CASE("downsampler: images and any calls give what the model gives") {
    std::mt19937 random(kSeed);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    long taken = 0;
    for (int round = 0; round < 3000; ++round) {
        CAPTURE(round);
        const double factor = randomFactor(random);
        // Widths that all cells fill, and any.
        const unsigned width = below(2) ? 20 * (1 + below(20)) : 1 + below(below(20) ? 200 : 3000);
        const unsigned height = below(2) ? 20 * (1 + below(3)) : 1 + below(60);
        CAPTURE(factor);
        CAPTURE(width);
        CAPTURE(height);
        Both all[2] = {{factor, width, height}, {factor, width, height}};
        const std::size_t channels = below(4) ? 4 : 1;
        const unsigned interrupted = below(3) ? 0 : 4 + below(20);  // each so many lines
        all[0].sampler.setFiltering(all[0].model.filtering = below(8) != 0);
        GuardedBytes line(4 * std::size_t{width});
        std::vector<unsigned char> got(4 * all[0].model.n), want(got);
        Both* one = &all[0];
        const auto call = [&](bool last, std::size_t bytes) {
            auto* const pixels = reinterpret_cast<unsigned*>(got.data());
            if (bytes == 4)
                last ? one->sampler.getlastline(pixels) : one->sampler.get(pixels);
            else
                last ? one->sampler.getlastline(got.data()) : one->sampler.get(got.data());
            last ? one->model.getLast(want.data(), bytes) : one->model.get(want.data(), bytes);
            REQUIRE(got == want);
            ++taken;
        };
        for (unsigned y = 0; y < height; ++y) {
            const bool interrupt = interrupted != 0 && below(interrupted) == 0;
            const unsigned what = interrupt ? below(6) : 6;
            std::size_t bytes = channels;
            if (what == 0) bytes = 5 - bytes;
            if (what == 1) call(true, below(2) ? 1 : 4);
            if (what == 2) one->sampler.setFiltering(one->model.filtering = below(2) != 0);
            if (what == 3) {
                Both& other = one == &all[0] ? all[1] : all[0];
                other.sampler = one->sampler;
                other.model = one->model;
                if (below(2)) one = &other;
            }
            if (what == 4) one = one == &all[0] ? &all[1] : &all[0];
            const auto noise = below(3);
            for (std::size_t i = 0; i < line.size(); ++i)
                line[i] = static_cast<unsigned char>(noise ? random() : random() % 2 * 255);
            if (bytes == 4)
                one->sampler.stuff(reinterpret_cast<const unsigned*>(line.data()));
            else
                one->sampler.stuff(line.data());
            one->model.stuff(line.data(), bytes);
            REQUIRE((one->sampler.ready() != 0) == one->model.ready());
            if (what == 5) continue;  // a line that nobody takes
            while (one->model.ready()) call(false, below(20) ? channels : 5 - channels);
        }
        call(true, channels);
    }
    CHECK(taken > 30000);
}
