#include "samples/proof/ink_rows.h"

#include "samples/proof/threshold.h"

namespace Proof {

InkRows::InkRows(ScanReader& scan, std::optional<int> level, bool inverted, const Watch& watch)
    : mScan(scan), mInverted(inverted) {
    const ScanInfo& info = scan.info();
    mSamples.resize(info.layout.rowBytes(info.width));
    mInk.resize(inkBytes(info.width));
    if (info.layout.bilevel()) return;
    mGrey.resize(static_cast<std::size_t>(info.width));
    mLevel = level;
    if (level) return;
    GreyHistogram histogram{};
    for (int y = 0; y < info.height; ++y) {
        if (watch && !watch(100.0 * y / info.height)) throw Cancelled();
        scan.readRow(mSamples.data());
        toGrey(info.layout, mSamples.data(), info.width, mGrey.data());
        countGreys(mGrey.data(), info.width, histogram);
    }
    scan.rewind();
    mLevel = otsuLevel(histogram);
}

const unsigned char* InkRows::next() {
    const ScanInfo& info = mScan.info();
    mScan.readRow(mSamples.data());
    if (info.layout.bilevel()) {
        toInk(info.layout, mSamples.data(), info.width, mInk.data());
    } else {
        toGrey(info.layout, mSamples.data(), info.width, mGrey.data());
        thresholdRow(mGrey.data(), info.width, *mLevel, mInk.data());
    }
    if (mInverted) invertInk(mInk.data(), info.width);
    return mInk.data();
}

}  // namespace Proof
