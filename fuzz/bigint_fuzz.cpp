// Arithmetic of big integers: sums, differences and products beside
// Boost.Multiprecision, by every form of the long loops; quotients digit by
// digit, in blocks and by the literal loops where these end in time, and beside
// Boost where the header says that they are true.
//
// Input: the length of the second operand in the first byte, then digits of two
// bytes each, low one first: the second operand's, the first one's.

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "embedded/host.h"
#include "encoding/bigint_digits.h"
#include "encoding/bigint_divide.h"
#include "tests/encoding/bigint_support.h"
#include "tests/encoding/literal_division.h"
#include "vaskel/encoding.h"

namespace {

using namespace Vaskel;
using boost::multiprecision::cpp_int;

void require(bool holds) {
    if (!holds) std::abort();
}

const std::string kNegative = "bigint::operator -= >> negative result!";
const std::string kByZero = "bigint::divmod >> division by 0";
std::vector<std::string> gLines;  // the debug lines since they were last taken

std::vector<std::string> takeLines() { return std::exchange(gLines, {}); }

cpp_int valueOf(const Digits& digits) {
    cpp_int value;
    if (!digits.empty()) import_bits(value, digits.rbegin(), digits.rend(), 16);
    return value;
}

Digits trimmed(Digits row) {
    row.resize(trimmedCount(row.data(), row.size()));
    return row;
}

// Sums, differences and products follow their rules, whatever zeros there are
// on top.
void tryRing(const Digits& a, const Digits& b) {
    const bigint x = numberOf(a), y = numberOf(b);
    const cpp_int va = valueOf(a), vb = valueOf(b);
    const std::size_t longer = std::max(a.size(), b.size());

    const Digits sum = digitsOf(x + y);
    require(valueOf(sum) == va + vb);
    require(sum.size() == longer + (((va + vb) >> 16 * longer) != 0));

    const Digits difference = digitsOf(x - y);
    if (a.size() < b.size()) {
        require(difference == a && takeLines() == std::vector{kNegative});
    } else {
        const cpp_int modulus = cpp_int(1) << 16 * a.size();
        require(valueOf(difference) == (va >= vb ? cpp_int(va - vb) : cpp_int(va - vb + modulus)));
        require(takeLines() == std::vector<std::string>(va < vb ? 1 : 0, kNegative));
        require(difference.size() + 1 >= a.size() && difference.size() <= a.size());
        require(difference.empty() || difference.size() == a.size() - 1 || difference.back() != 0);
    }

    const Digits reversed(b.rbegin(), b.rend());
    const Digits product = digitsOf(x * y);
    require(valueOf(product) == va * valueOf(reversed));
    for (const unsigned digit : {b.empty() ? 0u : b[0], 0u, 1u, 65535u})
        require(valueOf(digitsOf(x * static_cast<unsigned short>(digit))) == va * digit);

    // Operands that are the object itself count as copied first.
    bigint self = x;
    const bigint& same = self;
    self += same;
    require(digitsOf(self) == digitsOf(x + x));
    self = x;
    self *= same;
    require(digitsOf(self) == digitsOf(x * x));
    self = x;
    self -= same;
    require(digitsOf(self) == digitsOf(x - x));
    require(takeLines().empty());
}

void tryComparisons(const Digits& a, const Digits& b) {
    const bigint x = numberOf(a), y = numberOf(b);
    const auto order = std::pair(a.size(), valueOf(a)), other = std::pair(b.size(), valueOf(b));
    require((x < y) == (order < other) && (x <= y) == (order <= other));
    require((x > y) == (order > other) && (x >= y) == (order >= other));
    require((x == y) == (order == other) && (x != y) == (order != other));
}

// Rows of a division; report counts.
int gReports;

enum class Form { ByDigits, ByBlocks, Chosen };

Division byRows(const Digits& a, const Digits& d, Form form) {
    Digits rest = a, quotient(a.size() - d.size() + 1);
    rest.resize(a.size() + kDivideSpare);
    gReports = 0;
    const auto report = [] { ++gReports; };
    const auto divide = [&](auto function) {
        return function(d.data(), d.size(), rest.data(), a.size(), quotient.data(), report);
    };
    const std::size_t left =
        form == Form::ByDigits ? divide(divideRowsPlain)
        : form == Form::ByBlocks
            ? divide([](auto... operands) { return divideRowsByBlocks(operands...); })
            : divide(divideRows);
    require(trimmedCount(rest.data() + left, rest.size() - left) == 0);
    rest.resize(left);
    return {trimmed(quotient), rest, gReports};
}

// The literal loops first in a short trial, as most of them take ages.
constexpr std::int64_t kSteps = 20000;

void tryDivision(const Digits& a, const Digits& b) {
    const bigint x = numberOf(a), y = numberOf(b);
    bigint quotient, remainder;
    x.divmod(y, quotient, remainder);
    std::vector<std::string> lines = takeLines();
    const Digits divisor = trimmed(b);
    if (divisor.empty()) {
        require(digitsOf(quotient).empty() && digitsOf(remainder) == a);
        require(lines == std::vector{kByZero});
        return;
    }
    const Division got = {digitsOf(quotient), digitsOf(remainder), static_cast<int>(lines.size())};
    require(std::all_of(lines.begin(), lines.end(),
                        [](const std::string& line) { return line == kNegative; }));
    Division want;
    if (a.size() < 24 && literally<65536>(a, b, kSteps, want)) require(got == want);
    if (x < y) {
        require(got == Division{{}, a, 0});
    } else {
        for (const Form form : {Form::ByDigits, Form::ByBlocks, Form::Chosen})
            require(byRows(a, divisor, form) == got);
    }
    if ((a.size() <= 2 || a.size() == divisor.size()) && trimmed(a) == a && divisor == b) {
        require(valueOf(got.quotient) == valueOf(a) / valueOf(b));
        require(valueOf(got.remainder) == valueOf(a) % valueOf(b));
    }
    require(got.negatives > 0 || x < y || valueOf(got.remainder) == valueOf(a) % valueOf(b));

    require(digitsOf(x / y) == got.quotient && digitsOf(x % y) == got.remainder);
    bigint both = x;
    both.divmod(y, both, remainder);
    require(digitsOf(both) == got.quotient && digitsOf(remainder) == got.remainder);
    both = y;
    x.divmod(both, quotient, both);
    require(digitsOf(quotient) == got.quotient && digitsOf(both) == got.remainder);
    takeLines();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool listening =
        (Embedded::onDebugLine([](const char* line) { gLines.push_back(line); }), true);
    if (!listening || size == 0) return 0;
    Digits digits;
    for (std::size_t i = 1; i + 2 <= size; i += 2)
        digits.push_back(static_cast<unsigned short>(data[i] | data[i + 1] << 8));
    const auto split = digits.begin() + std::min<std::ptrdiff_t>(*data, std::ssize(digits));
    const Digits b(digits.begin(), split), a(split, digits.end());
    for (const LimbLoops* loops : limbLoopForms()) {
        forceLimbLoops(loops);
        tryRing(a, b);
        tryDivision(a, b);
    }
    forceLimbLoops(nullptr);
    tryComparisons(a, b);
    return 0;
}
