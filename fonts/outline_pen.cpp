#include "fonts/outline_pen.h"

#include <algorithm>

#include "fonts/outline_pen_avx512.h"

namespace Fonts {

unsigned char* drawPlain(unsigned char* out, OutlinePen pen, bool first, unsigned char command,
                         const int* points, int count) {
    for (const int* point = points; point != points + 2 * count; point += 2) {
        const int x = point[0], y = point[1];
        // A difference of two coordinates does not wrap: it is limited when written.
        out = encodeNumber(out, std::int64_t{x} - pen.at[0]);
        out = encodeNumber(out, std::int64_t{y} - pen.at[1]);
        pen.at[0] = x;
        pen.at[1] = y;
        if (first) {
            // While the outline is empty, each point of a curve seeds anew.
            seedBox(pen, x, y);
        } else {
            pen.box[0] = std::min(pen.box[0], x);
            pen.box[1] = std::min(pen.box[1], y);
            pen.box[2] = std::max(pen.box[2], x);
            pen.box[3] = std::max(pen.box[3], y);
        }
    }
    *out++ = command;
    return out;
}

}  // namespace Fonts

#if defined(__x86_64__)

namespace Fonts::Avx512 {

constinit const Numbers kNumbers = [] {
    Numbers numbers{};
    for (int i = 0; i < 8; ++i) {
        numbers.largestOfOne[i] = kLargestOfOne;
        numbers.largestOfTwo[i] = kLargestOfTwo;
        numbers.one[i] = kOneByte;
        numbers.two[i] = kTwoBytes;
        numbers.negative[i] = kNegative;
        numbers.begins[i] = 0xFF;
        numbers.ends[i] = 0xFF00;
    }
    return numbers;
}();

}  // namespace Fonts::Avx512

#endif
