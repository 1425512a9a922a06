// Samples are numbered from 0 along the outline; numbers below 0 and from N on
// are those of its extension. A Row holds a stretch of them in the buffers, and
// moves on as outputs are done with.
//
// Coordinates that a reflection takes beyond the 32-bit range wrap, as the
// filter's sums do.

#include "geometry/clean_filter.h"

#include <algorithm>
#include <cstring>

#include "geometry/clean_samples.h"

namespace Vaskel {
namespace {

constexpr std::size_t kOutputsAtATime = 256;
// With a large order a few outputs at a time have work enough.
constexpr std::size_t kSamplesAtATime = 1024;

// 2 * about - value in 32 bits.
std::int32_t reflect(std::int32_t about, std::int32_t value) {
    return wrap32(std::int64_t{2} * about - value);
}

// Samples begin() to end() - 1 in the buffers.
class Row {
 public:
    Row(CleanState& state, std::int64_t begin)
        : mBuffers(state.buffers),
          mReach(static_cast<std::int64_t>(state.kernel.reach)),
          mBegin(begin) {}

    std::int64_t end() const { return mBegin + static_cast<std::int64_t>(mCount); }
    std::int64_t capacity() const { return static_cast<std::int64_t>(mBuffers.x.size()); }
    std::size_t room() const { return mBuffers.x.size() - mCount; }

    std::int32_t& x(std::int64_t number) { return mBuffers.x[place(number)]; }
    std::int32_t& y(std::int64_t number) { return mBuffers.y[place(number)]; }

    // Leaves room for samples up to number - 1, which are yet to be written.
    void extendTo(std::int64_t number) { mCount = place(number); }

    // Repeats samples a period long up to number - 1.
    void repeatTo(std::int64_t number, std::int64_t period) {
        const std::size_t count = place(number);
        const auto back = static_cast<std::size_t>(period);
        std::int32_t* const x = mBuffers.x.data();
        std::int32_t* const y = mBuffers.y.data();
        for (std::size_t i = mCount; i < count; ++i) {
            x[i] = x[i - back];
            y[i] = y[i - back];
        }
        mCount = count;
    }

    // Takes as many samples from source as fit; false when it has come to its
    // end.
    bool fill(Samples& source) {
        const std::size_t wanted = room();
        const std::size_t taken =
            source.take(mBuffers.x.data() + mCount, mBuffers.y.data() + mCount, wanted);
        mCount += taken;
        return taken == wanted;
    }

    // Lets samples before number go.
    void dropBefore(std::int64_t number) {
        if (number <= mBegin) return;
        const std::size_t dropped = std::min(mCount, place(number));
        mCount -= dropped;
        std::memmove(mBuffers.x.data(), mBuffers.x.data() + dropped, mCount * sizeof(int));
        std::memmove(mBuffers.y.data(), mBuffers.y.data() + dropped, mCount * sizeof(int));
        mBegin += static_cast<std::int64_t>(dropped);
    }

    // Begins anew before sample number.
    void restartAt(std::int64_t number) {
        mCount = 0;
        mBegin = number;
    }

    // Filters around samples centre, centre + n, ... below limit for as long as
    // their windows are in the row, and returns the next centre.
    std::int64_t filter(const CleanState& state, std::int64_t centre, std::int64_t limit,
                        SimplifyFast& out) {
        limit = std::min(limit, end() - mReach);
        while (centre < limit) {
            WalkPoint* const place = out.place();
            WalkPoint* const outputs = place ? place : mBuffers.out.data();
            const std::size_t room =
                place ? std::min(mBuffers.out.size(), static_cast<std::size_t>(out.room()))
                      : mBuffers.out.size();
            const std::int64_t wanted = (limit - centre - 1) / state.order + 1;
            const std::size_t count = std::min(room, static_cast<std::size_t>(wanted));
            const FilterBlock block = {&x(centre - mReach), &y(centre - mReach),
                                       static_cast<std::size_t>(state.order), count};
            if (!filterBlockFast(state.kernel, block, mBuffers.narrow.data(), outputs))
                filterBlockPlain(state.kernel, block, outputs);
            if (place)
                out.added(static_cast<int>(count));
            else
                out.add({outputs, 1, static_cast<int>(count)});
            centre += static_cast<std::int64_t>(count) * state.order;
        }
        return centre;
    }

 private:
    std::size_t place(std::int64_t number) const {
        return static_cast<std::size_t>(number - mBegin);
    }

    CleanBuffers& mBuffers;
    std::int64_t mReach;
    std::int64_t mBegin;
    std::size_t mCount = 0;
};

// An open outline with all its samples at hand: coordinate i of its extension
// to both sides. Reflecting about both ends in turn moves by 2 (last - first)
// every 2 last samples.
std::int32_t extended(const std::vector<std::int32_t>& samples, std::int64_t last, std::int64_t i) {
    if (last == 0) return samples[0];
    const std::int64_t turn = 2 * last;
    const std::int64_t rest = (i % turn + turn) % turn;
    const std::int64_t turns = (i - rest) / turn;
    const std::int32_t end = samples[static_cast<std::size_t>(last)];
    const std::int32_t base = rest <= last
                                  ? samples[static_cast<std::size_t>(rest)]
                                  : reflect(end, samples[static_cast<std::size_t>(turn - rest)]);
    return wrap32(base + turns * 2 * (std::int64_t{end} - samples[0]));
}

// An open outline whose last sample is nearer to the first than the filter
// reaches. Windows are made one by one, in full.
[[gnu::cold]] void filterShort(const std::vector<std::int32_t>& x,
                               const std::vector<std::int32_t>& y, std::int64_t last,
                               const CleanState& state, SimplifyFast& out) {
    const auto reach = static_cast<std::int64_t>(state.kernel.reach);
    const std::size_t length = 2 * state.kernel.reach + 1;
    std::vector<std::int32_t> windowX(length), windowY(length);
    for (std::int64_t centre = 0; centre < last; centre += state.order) {
        for (std::size_t i = 0; i < length; ++i) {
            const std::int64_t number = centre - reach + static_cast<std::int64_t>(i);
            windowX[i] = extended(x, last, number);
            windowY[i] = extended(y, last, number);
        }
        const std::int32_t* const weights = state.kernel.weights.data();
        out.add(filterSample(windowX.data(), weights, state.kernel.reach),
                filterSample(windowY.data(), weights, state.kernel.reach));
    }
}

}  // namespace

[[gnu::cold]] CleanBuffers makeBuffers(int order, const CleanKernel& kernel) {
    const auto n = static_cast<std::size_t>(order);
    const std::size_t outputs = std::clamp<std::size_t>(kSamplesAtATime / n, 8, kOutputsAtATime);
    const std::size_t window = 2 * kernel.reach + 1;
    // Where one output is further from the next than a window is long, windows
    // are filled one by one.
    const std::size_t length = n < window ? window + (outputs - 1) * n : window;
    CleanBuffers buffers;
    buffers.x.resize(length);
    buffers.y.resize(length);
    buffers.narrow.resize(2 * (length + kTapBlock));
    buffers.out.resize(outputs);
    return buffers;
}

void filterClosed(WalkedPoints& points, CleanState& state, SimplifyFast& out) {
    const std::int64_t n = state.order;
    const std::int64_t half = cleanHalfLength(state.order);
    const auto reach = static_cast<std::int64_t>(state.kernel.reach);
    // The last window ends at sample N + half + reach: these may come again.
    const std::int64_t kept = half + reach + 1;
    std::vector<std::int32_t>& firstX = state.buffers.firstX;
    std::vector<std::int32_t>& firstY = state.buffers.firstY;

    Samples source(points, state.step);
    Row row(state, 0);
    std::int64_t centre = half;
    bool more = row.fill(source);
    Sample newest = {row.x(row.end() - 1), row.y(row.end() - 1)};
    // An outline that comes back to sample 0 has delivered that already.
    const auto periodOf = [&newest](std::int64_t samples, std::int32_t x, std::int32_t y) {
        return samples > 1 && newest.x == x && newest.y == y ? samples - 1 : samples;
    };
    const auto limitOf = [&](std::int64_t period) { return half + period / n * n + 1; };

    if (!more) {  // most of them: all that is needed fits in the row
        const std::int64_t period = periodOf(row.end(), row.x(0), row.y(0));
        const std::int64_t limit = limitOf(period);
        if (limit + reach <= row.capacity()) {
            row.repeatTo(limit + reach, period);
            row.filter(state, centre, limit, out);
            return;
        }
    }

    firstX.clear();
    firstY.clear();
    for (std::int64_t from = 0;;) {
        const std::int64_t until = std::min(row.end(), kept);
        if (until > from) {
            firstX.insert(firstX.end(), &row.x(from), &row.x(from) + (until - from));
            firstY.insert(firstY.end(), &row.y(from), &row.y(from) + (until - from));
        }
        if (row.end() > from) newest = {row.x(row.end() - 1), row.y(row.end() - 1)};
        if (!more) break;
        // The centre of each window here is a sample before the last one.
        centre = row.filter(state, centre, row.end(), out);
        row.dropBefore(centre - reach);
        from = row.end();
        more = row.fill(source);
    }

    const std::int64_t period = periodOf(row.end(), firstX[0], firstY[0]);
    const std::int64_t limit = limitOf(period);
    while (centre < limit) {
        row.dropBefore(centre - reach);
        if (row.end() < centre - reach) row.restartAt(centre - reach);
        const std::int64_t from = row.end();
        const std::int64_t until =
            std::min(limit + reach, from + static_cast<std::int64_t>(row.room()));
        row.extendTo(until);
        // Of longer periods only the first samples are at hand, which is what
        // comes here: from is then not before N, nor until behind N + kept.
        std::int64_t place = period <= kept ? from % period : from - period;
        for (std::int64_t i = from; i < until; ++i) {
            row.x(i) = firstX[static_cast<std::size_t>(place)];
            row.y(i) = firstY[static_cast<std::size_t>(place)];
            if (++place == period) place = 0;
        }
        centre = row.filter(state, centre, limit, out);
    }
}

Sample filterOpen(WalkedPoints& points, CleanState& state, SimplifyFast& out) {
    const auto reach = static_cast<std::int64_t>(state.kernel.reach);
    Samples source(points, state.step);
    Row row(state, -reach);
    row.extendTo(0);
    bool more = row.fill(source);
    std::int64_t last = row.end() - 1;
    if (last < reach) {
        row.dropBefore(0);
        filterShort(state.buffers.x, state.buffers.y, last, state, out);
        const Sample end = {row.x(last), row.y(last)};
        out.add(end.x, end.y);
        return end;
    }

    for (std::int64_t i = 1; i <= reach; ++i) {
        row.x(-i) = reflect(row.x(0), row.x(i));
        row.y(-i) = reflect(row.y(0), row.y(i));
    }
    std::int64_t centre = 0;
    Sample end = {row.x(last), row.y(last)};
    while (more) {
        centre = row.filter(state, centre, row.end(), out);
        row.dropBefore(std::min(centre, row.end()) - reach);
        more = row.fill(source);
        last = row.end() - 1;
        end = {row.x(last), row.y(last)};
    }

    // The row reaches back to sample last - reach at least.
    const std::int64_t beyond = last + reach + 1;
    while (centre < last) {
        row.dropBefore(centre - reach);
        const std::int64_t from = row.end();
        const std::int64_t until = std::min(beyond, from + static_cast<std::int64_t>(row.room()));
        row.extendTo(until);
        for (std::int64_t i = from; i < until; ++i) {
            row.x(i) = reflect(end.x, row.x(2 * last - i));
            row.y(i) = reflect(end.y, row.y(2 * last - i));
        }
        centre = row.filter(state, centre, last, out);
    }
    // Around the last sample all pairs cancel out.
    out.add(end.x, end.y);
    return end;
}

}  // namespace Vaskel
