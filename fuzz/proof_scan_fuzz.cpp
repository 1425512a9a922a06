// Scan readers of the sample host: whatever the bytes are, a scan is read or
// refused with a reason; what is read once is read again after a rewind, row
// for row; rows of ink are empty behind the width, and their runs ascend.

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <vector>

#include "samples/proof/failure.h"
#include "samples/proof/ink_rows.h"
#include "samples/proof/runs.h"

namespace {

// Larger pictures than that cost time and show nothing new.
constexpr double kMaxPixels = 1 << 22;

void require(bool holds) {
    if (!holds) std::abort();
}

void checkRow(const unsigned char* ink, int width) {
    if (width % 8) require((ink[width / 8] & (0xFF >> (width % 8))) == 0);
    std::vector<int> runs(static_cast<std::size_t>(width) + 1);
    const int found = Proof::findRuns(ink, width, 1, runs.data(), width + 1);
    require(found % 2 == 0 && found <= width + 1);
    for (int i = 1; i < found; ++i)
        require(runs[static_cast<std::size_t>(i - 1)] < runs[static_cast<std::size_t>(i)]);
    require(found == 0 || (runs[0] >= 0 && runs[static_cast<std::size_t>(found - 1)] <= width));
}

// All rows of ink, or none where reading fails.
std::optional<std::vector<unsigned char>> readAll(Proof::ScanReader& scan) {
    try {
        Proof::InkRows rows(scan, 128, false, nullptr);
        std::vector<unsigned char> all;
        for (int y = 0; y < rows.height(); ++y) {
            const unsigned char* ink = rows.next();
            checkRow(ink, rows.width());
            all.insert(all.end(), ink, ink + Proof::inkBytes(rows.width()));
        }
        return all;
    } catch (const Proof::Failure& failure) {
        require(failure.what()[0] != 0);
        return std::nullopt;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto source = Proof::memoryBytes("fuzz", {data, size});
    try {
        const auto scan = Proof::openScan(*source, 1, nullptr);
        const Proof::ScanInfo& info = scan->info();
        require(info.width > 0 && info.width <= Proof::kMaxScanSide);
        require(info.height > 0 && info.height <= Proof::kMaxScanSide);
        if (double(info.width) * info.height > kMaxPixels) return 0;
        const auto first = readAll(*scan);
        if (!first) return 0;
        scan->rewind();
        const auto second = readAll(*scan);
        require(second && *second == *first);
    } catch (const Proof::Failure& failure) {
        require(failure.what()[0] != 0);
    }
    return 0;
}
