// Cleaning of any outline with any parameters: the shipping form gives what the
// plain one gives, and without filter every point is one of the walk's, in its
// order.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "geometry/clean.h"
#include "geometry/clean_simplify.h"
#include "tests/support/paths.h"
#include "vaskel/geometry.h"

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

// Bytes of the input, one after the other; zeros behind its end.
class Reader {
 public:
    Reader(const std::uint8_t* data, std::size_t size) : mData(data), mLeft(size) {}
    bool empty() const { return mLeft == 0; }
    std::uint8_t byte() {
        if (mLeft == 0) return 0;
        --mLeft;
        return *mData++;
    }
    std::uint32_t word() {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) value = value << 8 | byte();
        return value;
    }

 private:
    const std::uint8_t* mData;
    std::size_t mLeft;
};

// Mostly small steps from the point before; now and then a point anywhere.
Points readPoints(Reader& in, bool anywhere, int leap, int divisor) {
    Points points = {{0, 0}};
    while (!in.empty() && points.size() < 400) {
        const std::uint8_t kind = in.byte();
        const Point last = points.back();
        if (anywhere && kind < 16) {
            const auto x = static_cast<int>(in.word());
            points.push_back({x, static_cast<int>(in.word())});
        } else if (kind < 32) {
            points.push_back({0, 0});
        } else {
            const std::int64_t scale = kind < 64 ? leap : 1;
            const std::int64_t x = last.x + scale * (static_cast<std::int8_t>(in.byte()) / divisor);
            const std::int64_t y = last.y + scale * (static_cast<std::int8_t>(in.byte()) / divisor);
            points.push_back({static_cast<int>(static_cast<std::uint32_t>(x)),
                              static_cast<int>(static_cast<std::uint32_t>(y))});
        }
    }
    return points;
}

bool isPartOf(const Points& part, const Points& all) {
    std::size_t at = 0;
    for (const Point& p : all)
        if (at < part.size() && part[at] == p) ++at;
    return at == part.size();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Reader in(data, size);
    const std::uint8_t mode = in.byte();
    const int n = in.byte() % 12 - 2;
    const auto tolerance = static_cast<int>(mode & 4 ? in.word() : in.byte() % 8u);
    const bool anywhere = (mode & 2) != 0;
    const int step = anywhere ? (1 << 26) + in.byte() : in.byte() % 40 - 2;
    const int boxSize = static_cast<std::int8_t>(in.byte());
    // The plain form keeps all samples: with the filter leaps are short.
    const Points points = readPoints(in, anywhere, n < 1 ? 257 : 3, mode & 16 ? 16 : 1);
    const PathPtr path = mode & 1 ? openPath(points) : closedPath(points);

    Vaskel::cleanpar(n, tolerance, step);
    // Few points as there are, they are told by the table of near steps as well.
    Vaskel::ConeTable& cones = Vaskel::cleanState().cones;
    cones.forget();
    if (mode & 8 && tolerance != 0) {
        const std::int64_t cut = std::min<std::int64_t>(std::abs(std::int64_t{tolerance}),
                                                        Vaskel::SimplifyFast::kWideTolerance);
        cones.make(cut * cut);
    }
    const PathPtr got(Vaskel::clean(path.get(), boxSize));
    const PathPtr want(Vaskel::cleanPlain(path.get(), boxSize));
    require(!got == !want);
    if (!got) return 0;
    require(got->flags == want->flags);
    const Points gotPoints = walked(got.get());
    require(gotPoints == walked(want.get()));
    if (n < 1) require(isPartOf(gotPoints, walked(path.get())));
    return 0;
}
