#include "samples/proof/make/picture.h"

#include <algorithm>
#include <cstring>

#include "vaskel/encoding.h"
#include "vaskel/raster.h"

namespace Proof {
namespace {

struct StringEncoder : Vaskel::ascii85out_base {
    std::string text;
    void putuns8(unsigned char c) override { text.push_back(static_cast<char>(c)); }
};

Picture emptyLike(const Picture& picture) {
    Picture other;
    other.name = picture.name;
    other.format = picture.format;
    other.space = picture.space;
    return other;
}

}  // namespace

Picture reduced(const Picture& picture, int outWidth, bool filtering) {
    Vaskel::downsampler sampler(picture.width, outWidth, static_cast<unsigned>(picture.width),
                                static_cast<unsigned>(picture.height));
    sampler.setFiltering(filtering);
    Picture out = emptyLike(picture);
    out.width = static_cast<int>(sampler.resize(static_cast<unsigned>(picture.width)));
    std::vector<std::uint32_t> line(static_cast<std::size_t>(out.width));
    bool pending = false;
    for (int y = 0; y < picture.height; ++y) {
        sampler.stuff(picture.row(y));
        pending = true;
        while (sampler.ready()) {
            sampler.get(line.data());
            out.pixels.insert(out.pixels.end(), line.begin(), line.end());
            ++out.height;
            pending = false;
        }
    }
    // Whole lines come complete; rounding may leave the last one to this call.
    if (pending &&
        out.height < static_cast<int>(sampler.resizeY(static_cast<unsigned>(picture.height)))) {
        sampler.getlastline(line.data());
        out.pixels.insert(out.pixels.end(), line.begin(), line.end());
        ++out.height;
    }
    return out;
}

Picture cropped(const Picture& picture, int x, int y, int width, int height) {
    Picture out = emptyLike(picture);
    out.width = std::min(width, picture.width - x);
    out.height = std::min(height, picture.height - y);
    for (int row = 0; row < out.height; ++row) {
        const std::uint32_t* const from = picture.row(y + row) + x;
        out.pixels.insert(out.pixels.end(), from, from + out.width);
    }
    return out;
}

Picture enlarged(const Picture& picture, double factor) {
    Vaskel::upsampler sampler(1, factor, picture.width);
    Picture out = emptyLike(picture);
    out.width = sampler.resize(picture.width);
    std::vector<std::uint32_t> line(static_cast<std::size_t>(out.width));
    for (int y = 0; y < picture.height; ++y) {
        sampler.stuff(picture.row(y));
        while (sampler.ready()) {
            sampler.get(line.data(), 4 * out.width);
            out.pixels.insert(out.pixels.end(), line.begin(), line.end());
            ++out.height;
        }
    }
    return out;
}

std::vector<unsigned char> samplesOf(const Picture& picture) {
    const auto channels = static_cast<std::size_t>(picture.channels());
    std::vector<unsigned char> samples;
    samples.reserve(picture.pixels.size() * channels);
    for (const std::uint32_t& pixel : picture.pixels) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&pixel);
        samples.insert(samples.end(), bytes, bytes + channels);
    }
    return samples;
}

std::string ascii85(const std::vector<unsigned char>& samples) {
    StringEncoder encoder;
    encoder.text.reserve(samples.size() / 4 * 5 + samples.size() / 80 + 16);
    for (const unsigned char sample : samples) encoder.encode(sample);
    encoder.finish();
    return std::move(encoder.text);
}

}  // namespace Proof
