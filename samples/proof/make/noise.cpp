#include "samples/proof/make/noise.h"

#include <functional>

#include "platform/orlune.h"
#include "vaskel/util.h"

namespace Proof {
namespace {

constexpr int kWidth = 96, kHeight = 40;  // two pixels a point, or nearly

Picture greyPicture(const std::function<int()>& draw) {
    Picture picture;
    picture.space = Picture::Grey;
    picture.width = kWidth;
    picture.height = kHeight;
    picture.pixels.reserve(kWidth * kHeight);
    for (int i = 0; i < kWidth * kHeight; ++i)
        picture.pixels.push_back(0x01010101u * static_cast<std::uint32_t>(draw()));
    return picture;
}

int toByte(double share) { return Orlune::iround(share * 255); }

}  // namespace

std::vector<NoiseSwatch> noiseSwatches(int seed) {
    Vaskel::Random r(seed);
    struct Kind {
        const char* name;
        std::function<int()> draw;
    };
    const Kind kinds[] = {
        {"nextByte", [&r] { return static_cast<unsigned char>(r.nextByte()); }},
        {"nextInt(4)", [&r] { return r.nextInt(4) * 85; }},
        {"nextDouble", [&r] { return toByte(r.nextDouble()); }},
        {"nextFloat", [&r] { return toByte(static_cast<double>(r.nextFloat())); }},
        {"nextBool", [&r] { return r.nextBool() ? 255 : 0; }},
        {"nextShort, low byte", [&r] { return r.nextShort() & 255; }},
        {"ranint(16)", [] { return Vaskel::ranint(16) * 17; }},
        {"randou", [] { return toByte(Vaskel::randou()); }},
    };
    std::vector<NoiseSwatch> swatches;
    for (const Kind& kind : kinds) {
        r.setSeed(seed);
        Vaskel::ranini(seed);
        swatches.push_back({kind.name, greyPicture(kind.draw)});
    }
    return swatches;
}

}  // namespace Proof
