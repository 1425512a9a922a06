// Tracing of any bitmap, and of any lists of positions.
//
// The first byte chooses. Bitmaps: without smoothing, every unit edge between
// set and clear pixels is covered exactly once by the outlines, and nothing
// else is. Lists, in any order and number: both forms of AddLine deliver the
// same outlines, and a bitmap traced afterwards comes out right.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "raster/vectorizer.h"
#include "tests/support/bitmaps.h"
#include "vaskel/geometry.h"

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

// Bits, highest first, in lines of the given width.
Bitmap bitmapOf(const std::uint8_t* data, std::size_t size, std::size_t width) {
    Bitmap bitmap;
    for (std::size_t i = 0; i < 8 * size; ++i) {
        if (i % width == 0) bitmap.emplace_back();
        bitmap.back() += (data[i / 8] >> (7 - i % 8) & 1) != 0 ? '#' : '.';
    }
    return bitmap;
}

void traceBitmap(const Bitmap& bitmap, bool flip) {
    TestTracer tracer;
    require(edgesOf(tracer.trace(bitmap, flip)) == boundaryOf(bitmap));
}

// A byte a position: small numbers, the ends of the range, the terminator; a
// line ends at its terminator or when the data does.
std::vector<std::vector<int>> listsOf(const std::uint8_t* data, std::size_t size) {
    std::vector<std::vector<int>> lists(1);
    for (std::size_t i = 0; i < size; ++i) {
        const int value = data[i] >= 0xF0 ? kLineEnd : data[i] == 0xEF ? INT32_MIN : data[i] / 2;
        lists.back().push_back(value);
        if (value == kLineEnd) lists.emplace_back();
    }
    lists.back().push_back(kLineEnd);
    return lists;
}

void traceLists(const std::uint8_t* data, std::size_t size, bool flip, bool smooth) {
    TestTracer tracer(-1, 0, 0, 0, 1, smooth);
    tracer.lists = listsOf(data, size);
    Vaskel::gAddLineForm = Vaskel::AddLineForm::kPlain;
    const Outlines want = tracer.traceLists(flip);
    Vaskel::gAddLineForm = Vaskel::AddLineForm::kFast;
    require(tracer.traceLists(flip) == want);
    require(tracer.trace({"##", "#."}, flip).size() == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > 4000) return 0;
    Vaskel::cleanpar(0, 0, 0);
    const bool flip = (data[0] & 2) != 0;
    if ((data[0] & 1) != 0)
        traceBitmap(bitmapOf(data + 2, size - 2, 1 + data[1] % 70), flip);
    else
        traceLists(data + 1, size - 1, flip, (data[0] & 4) != 0);
    return 0;
}
