// Memory: a window of twice the filter's length and the first samples of a
// closed outline, never all samples. An outline shorter than that has few.
//
// Coordinates that a reflection takes beyond the 32-bit range wrap, as the
// filter's sums do.

#include "geometry/clean_filter.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "geometry/clean_kernel.h"

namespace Vaskel {
namespace {

// 2 * about - value in 32 bits.
std::int32_t reflect(std::int32_t about, std::int32_t value) {
    return wrap32(std::int64_t{2} * about - value);
}
Sample reflect(const Sample& about, const Sample& value) {
    return {reflect(about.x, value.x), reflect(about.y, value.y)};
}

// The newest length = 2 reach + 1 samples, contiguous for each coordinate. The
// row is twice as long and starts again at its front when it is full.
class Window {
 public:
    explicit Window(const CleanParameters& parameters)
        : mReach(parameters.reach),
          mWeights(parameters.weights.get()),
          mLength(static_cast<std::size_t>(2 * mReach + 1)),
          mX(2 * mLength),
          mY(2 * mLength) {}

    std::int64_t length() const { return static_cast<std::int64_t>(mLength); }

    void push(const Sample& sample) {
        if (mEnd == mX.size()) {
            const std::size_t kept = mLength - 1;
            std::memmove(mX.data(), mX.data() + (mEnd - kept), kept * sizeof mX[0]);
            std::memmove(mY.data(), mY.data() + (mEnd - kept), kept * sizeof mY[0]);
            mEnd = kept;
        }
        mX[mEnd] = sample.x;
        mY[mEnd] = sample.y;
        ++mEnd;
    }

    // The sample that was pushed back pushes before the newest one.
    Sample newest(std::int64_t back) const {
        const std::size_t at = mEnd - 1 - static_cast<std::size_t>(back);
        return {mX[at], mY[at]};
    }

    // The centre of the full window, filtered.
    Sample filtered() const {
        const std::size_t first = mEnd - mLength;
        return {filterSample(mX.data() + first, mWeights, mReach),
                filterSample(mY.data() + first, mWeights, mReach)};
    }

 private:
    std::int64_t mReach;
    const std::int32_t* mWeights;
    std::size_t mLength;
    std::vector<std::int32_t> mX, mY;
    std::size_t mEnd = 0;
};

// The samples of a closed outline without end: after the last one the first
// ones again, of which kept are remembered.
class Ring {
 public:
    Ring(const Pemmit::Path* path, int step, std::int64_t kept)
        : mSamples(path, step), mKept(kept) {}

    Sample next() {
        Sample sample;
        if (!ended() && take(&sample)) return sample;
        sample = mFirst[static_cast<std::size_t>(mPlace)];
        mPlace = (mPlace + 1) % mPeriod;
        return sample;
    }

    void skip(std::int64_t count) {
        Sample unused;
        while (count > 0 && !ended() && take(&unused)) --count;
        if (count > 0) mPlace = (mPlace + count) % mPeriod;
    }

    // The number of samples of one period, once the outline has come round.
    bool ended() const { return mPeriod > 0; }
    std::int64_t period() const { return mPeriod; }

 private:
    // An outline that comes back to sample 0 has delivered it already: its
    // period is one shorter and goes on with sample 1.
    bool take(Sample* sample) {
        if (mSamples.next(&sample->x, &sample->y)) {
            ++mCount;
            mNewest = *sample;
            if (mCount <= mKept) mFirst.push_back(*sample);
            return true;
        }
        const bool cameBack = mCount > 1 && mNewest.x == mFirst[0].x && mNewest.y == mFirst[0].y;
        mPeriod = cameBack ? mCount - 1 : mCount;
        mPlace = cameBack ? 1 % mPeriod : 0;
        return false;
    }

    Samples mSamples;
    std::int64_t mKept;
    std::vector<Sample> mFirst;
    Sample mNewest = {};
    std::int64_t mCount = 0;
    std::int64_t mPeriod = 0;  // 0 until known
    std::int64_t mPlace = 0;   // what next delivers once the outline has come round
};

// An open outline with all its samples at hand: sample i of its extension to
// both sides. Reflecting about both ends in turn moves by 2 (last - first)
// every 2 last samples.
Sample extended(const std::vector<Sample>& samples, std::int64_t i) {
    const std::int64_t last = static_cast<std::int64_t>(samples.size()) - 1;
    if (last == 0) return samples[0];
    const std::int64_t turn = 2 * last;
    const std::int64_t rest = (i % turn + turn) % turn;
    const std::int64_t turns = (i - rest) / turn;
    const Sample& begin = samples.front();
    const Sample& end = samples.back();
    const Sample base = rest <= last ? samples[static_cast<std::size_t>(rest)]
                                     : reflect(end, samples[static_cast<std::size_t>(turn - rest)]);
    return {wrap32(base.x + turns * 2 * (std::int64_t{end.x} - begin.x)),
            wrap32(base.y + turns * 2 * (std::int64_t{end.y} - begin.y))};
}

// An open outline with no more samples than the filter reaches to one side.
void filterShort(const std::vector<Sample>& samples, const CleanParameters& parameters,
                 SimplifyFast& out) {
    const std::int64_t last = static_cast<std::int64_t>(samples.size()) - 1;
    Window window(parameters);
    for (std::int64_t centre = 0; centre < last; centre += parameters.order) {
        for (std::int64_t i = centre - parameters.reach; i <= centre + parameters.reach; ++i)
            window.push(extended(samples, i));
        const Sample point = window.filtered();
        out.add(point.x, point.y);
    }
    out.add(samples.back().x, samples.back().y);
}

}  // namespace

void filterClosed(const Pemmit::Path* path, const CleanParameters& parameters, SimplifyFast& out) {
    const std::int64_t n = parameters.order;
    const std::int64_t half = cleanHalfLength(parameters.order);
    Window window(parameters);
    // The last window ends at sample N + half + reach.
    Ring ring(path, parameters.step, half + parameters.reach + 1);
    ring.skip(half - parameters.reach);
    for (std::int64_t i = 0; i < window.length(); ++i) window.push(ring.next());

    // The centre is sample half + moved. moved > N is left untried; where N
    // shows itself only while the window moves, that moves by at most n samples
    // past sample N, which are remembered too since n <= half.
    for (std::int64_t moved = 0; !ring.ended() || moved <= ring.period();) {
        const Sample point = window.filtered();
        out.add(point.x, point.y);
        moved += n;
        if (ring.ended() && moved > ring.period()) break;
        const std::int64_t fresh = std::min(n, window.length());
        ring.skip(n - fresh);
        for (std::int64_t i = 0; i < fresh; ++i) window.push(ring.next());
    }
}

Sample filterOpen(const Pemmit::Path* path, const CleanParameters& parameters, SimplifyFast& out) {
    const std::int64_t n = parameters.order;
    const std::int64_t reach = parameters.reach;
    Samples samples(path, parameters.step);
    std::vector<Sample> head;
    Sample sample;
    while (static_cast<std::int64_t>(head.size()) <= reach && samples.next(&sample.x, &sample.y))
        head.push_back(sample);
    if (static_cast<std::int64_t>(head.size()) <= reach) {
        filterShort(head, parameters, out);
        return head.back();
    }

    Window window(parameters);
    for (std::int64_t i = reach; i > 0; --i)
        window.push(reflect(head[0], head[static_cast<std::size_t>(i)]));
    for (const Sample& each : head) window.push(each);

    // newest is the number of the newest real sample, beyond how many
    // reflected ones follow it in the window, whose centre is newest + beyond
    // - reach. While samples come, that is below the last one: reach is not 0.
    std::int64_t newest = reach;
    std::int64_t beyond = 0;
    bool ended = false;
    for (std::int64_t centre = 0; !ended || centre < newest; centre += n) {
        const Sample point = window.filtered();
        out.add(point.x, point.y);
        for (std::int64_t i = 0; i < n; ++i) {
            if (!ended && samples.next(&sample.x, &sample.y)) {
                window.push(sample);
                ++newest;
                continue;
            }
            ended = true;
            if (centre + n >= newest) break;
            // The reflection of the sample as far before the last one as this
            // one is behind it, which is at most reach.
            const Sample end = window.newest(beyond);
            ++beyond;
            window.push(reflect(end, window.newest(2 * beyond - 1)));
        }
    }
    // Its own filtered value is itself: around it all pairs cancel out.
    const Sample end = window.newest(beyond);
    out.add(end.x, end.y);
    return end;
}

}  // namespace Vaskel
