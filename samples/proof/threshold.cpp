#include "samples/proof/threshold.h"

#include <cmath>

#include "samples/proof/failure.h"
#include "vaskel/units.h"

namespace Proof {

void countGreys(const std::uint8_t* grey, int width, GreyHistogram& histogram) {
    for (int x = 0; x < width; ++x) ++histogram[grey[x]];
}

int otsuLevel(const GreyHistogram& histogram) {
    double all = 0;
    double sum = 0;
    for (std::size_t grey = 0; grey < 256; ++grey) {
        const double count = static_cast<double>(histogram[grey]);
        all += count;
        sum += count * static_cast<double>(grey);
    }
    double best = 0;
    int first = 128;  // of the levels that reach best
    int last = 128;
    double below = 0;
    double sumBelow = 0;
    for (int level = 1; level < 256; ++level) {
        const double count = static_cast<double>(histogram[static_cast<std::size_t>(level - 1)]);
        below += count;
        sumBelow += count * (level - 1);
        if (below == 0 || below == all) continue;
        const double apart = sumBelow / below - (sum - sumBelow) / (all - below);
        const double variance = below * (all - below) * apart * apart;
        if (variance > best) {
            best = variance;
            first = last = level;
        } else if (variance == best && last == level - 1) {
            last = level;
        }
    }
    return (first + last) / 2;
}

std::optional<int> parseThreshold(const std::string& text) {
    if (text == "otsu") return std::nullopt;
    const bool percent = !text.empty() && text.back() == '%';
    const std::string number = percent ? text.substr(0, text.size() - 1) : text;
    double value = 0;
    if (Vaskel::strtodou(number.c_str(), &value) == 0 && std::isfinite(value) && value >= 0 &&
        value <= (percent ? 100 : 255))
        return static_cast<int>(std::lround(percent ? value * 2.56 : value));
    throw Failure("--threshold takes otsu, a grey from 0 to 255 or a percentage, not \"" +
                      oneLine(text) + "\"",
                  kExitUsage);
}

}  // namespace Proof
