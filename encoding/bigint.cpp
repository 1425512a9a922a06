// Integers of any size: the class on top of rows of digits.
//
// Whatever can fail, memory or a host's debug output, comes first; a result
// that may not replace its operand yet is made beside it and exchanged.

#include "encoding/bigint.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "encoding/bigint_digits.h"
#include "encoding/bigint_divide.h"
#include "encoding/bigint_multiply.h"
#include "platform/orlune.h"
#include "vaskel/encoding.h"

namespace Vaskel {
namespace {

using Access = BigintAccess;

void reportNegativeResult() { Orlune::debug("bigint::operator -= >> negative result!"); }

std::size_t size(const bigint& number) { return static_cast<std::size_t>(Access::length(number)); }

std::int32_t asLength(std::size_t count) {
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throw std::bad_alloc();
    return static_cast<std::int32_t>(count);
}

// Less than 0, 0 or more than 0, by length first.
int compare(const bigint& a, const bigint& b) {
    if (size(a) != size(b)) return size(a) < size(b) ? -1 : 1;
    return compareDigits(Access::digits(a), Access::digits(b), size(a));
}

// Whether a, of one digit at least and not shorter than b, is less by value.
bool lessByValue(const bigint& a, const bigint& b) {
    const Digit *const row = Access::digits(a), *const other = Access::digits(b);
    const std::size_t mine = size(a), theirs = size(b);
    // The top digit of a decides most of the time.
    if (row[mine - 1] > (mine == theirs ? other[theirs - 1] : 0)) return false;
    return trimmedCount(row + theirs, mine - theirs) == 0 && compareDigits(row, other, theirs) < 0;
}

// A number of length zero digits, with room for one more.
bigint zeroDigits(std::size_t length) {
    bigint number;
    const std::int32_t checked = asLength(length);
    Access::reserve(number, length + 1);
    Access::setLength(number, checked);
    return number;
}

// Makes number digits[0, count), which are not its own.
void replaceDigits(bigint& number, const Digit* digits, std::size_t count) {
    Access::reserve(number, count);
    std::copy_n(digits, count, Access::digits(number));
    Access::setLength(number, asLength(count));
}

// Digits that a function works with for a while, from the stack if they are few.
class WorkRow {
 public:
    explicit WorkRow(std::size_t count) {
        if (count > std::size(mFew)) mMany.reset(new Digit[count]);
    }
    Digit* digits() { return mMany ? mMany.get() : mFew; }

 private:
    Digit mFew[256];
    std::unique_ptr<Digit[]> mMany;
};

// So many digits of a product are made in place.
constexpr std::size_t kFewDigits = 24;

// a[0, n) times factor[0, m) with its digits reversed; n + m - 1 digits, or one
// more.
bigint multiplied(const Digit* a, std::size_t n, const Digit* factor, std::size_t m) {
    // Both as whole limbs, zeros on top; the product's place has room for them.
    const std::size_t na = limbsFor(n), nb = limbsFor(m);
    bigint product = zeroDigits((na + nb) * kPerLimb);
    WorkRow work((na + nb) * kPerLimb + multiplyScratch(na, nb));
    Digit *const rowA = work.digits(), *const rowB = rowA + na * kPerLimb;
    std::fill(std::copy_n(a, n, rowA), rowB, Digit(0));
    Digit* const scratch = rowB + nb * kPerLimb;
    std::fill(std::reverse_copy(factor, factor + m, rowB), scratch, Digit(0));
    multiplyLimbs(rowA, na, rowB, nb, Access::digits(product), scratch);
    Access::setLength(product, asLength(n + m - (Access::digits(product)[n + m - 1] == 0)));
    return product;
}

}  // namespace

void BigintAccess::swap(bigint& a, bigint& b) {
    std::swap(a.mDigits.mData, b.mDigits.mData);
    std::swap(a.mDigits.mCapacity, b.mDigits.mCapacity);
    std::swap(a.mDigits.mGrowthStep, b.mDigits.mGrowthStep);
    std::swap(a.mLength, b.mLength);
}

bigint::bigint() : mLength(0) {}

bigint::bigint(unsigned int value) : bigint(std::uint64_t{value}, Whole()) {}

bigint::bigint(std::uint64_t value, Whole) : mLength(0) {
    for (; value != 0; value >>= 16)
        mDigits[static_cast<std::uint64_t>(mLength++)] = static_cast<Digit>(value);
}

bigint::bigint(const bigint& other) = default;
bigint& bigint::operator=(const bigint& other) {
    mDigits = other.mDigits;
    mLength = other.mLength;
    return *this;
}
bigint::~bigint() = default;

void bigint::reportNegative(std::int64_t value) {
    Orlune::debug("bigint >> negative operand: %lld", static_cast<long long>(value));
}

bigint::operator unsigned int() const {
    const Digit* const digits = Access::digits(*this);
    if (mLength == 0) return 0;
    if (mLength == 1) return digits[0];
    if (mLength == 2) return std::uint32_t{digits[1]} << 16 | digits[0];
    Orlune::debug("bigint::operator uns32 >> overflow");
    return 4294967295u;
}

bool bigint::operator==(const bigint& other) const { return compare(*this, other) == 0; }
bool bigint::operator!=(const bigint& other) const { return compare(*this, other) != 0; }
bool bigint::operator<(const bigint& other) const { return compare(*this, other) < 0; }
bool bigint::operator<=(const bigint& other) const { return compare(*this, other) <= 0; }
bool bigint::operator>(const bigint& other) const { return !(*this <= other); }
bool bigint::operator>=(const bigint& other) const { return !(*this < other); }

bigint& bigint::operator+=(const bigint& other) {
    const std::size_t mine = size(*this), theirs = size(other);
    if (theirs <= mine && mine < Access::capacity(mDigits)) {
        Digit* const a = Access::digits(*this);
        unsigned carry = addDigits(a, Access::digits(other), theirs);
        if (carry == 0) return *this;
        carry = carryInto(a + theirs, mine - theirs, carry);
        if (carry != 0) a[mLength++] = 1;
        return *this;
    }
    const std::size_t longer = std::max(mine, theirs);
    // Room for the carry first: nothing may fail once digits have changed.
    const bool roomy = longer < Access::capacity(mDigits);
    if (!roomy) {
        asLength(longer + 1);
        Access::reserve(*this, longer + 1);
    }
    Digit* const a = Access::digits(*this);
    const Digit* const b = Access::digits(other);
    const std::size_t shared = std::min(mine, theirs);
    unsigned carry = addDigits(a, b, shared);
    if (theirs > mine) std::copy(b + mine, b + theirs, a + mine);
    carry = carryInto(a + shared, longer - shared, carry);
    a[longer] = static_cast<Digit>(carry);
    mLength = static_cast<std::int32_t>(longer + carry);
    return *this;
}

bigint& bigint::operator-=(const bigint& other) {
    const std::size_t mine = size(*this), theirs = size(other);
    if (mine < theirs) {
        reportNegativeResult();
        return *this;
    }
    if (mine == 0) return *this;
    if (lessByValue(*this, other)) reportNegativeResult();
    Digit* const a = Access::digits(*this);
    const unsigned borrow = subtractDigits(a, Access::digits(other), theirs);
    borrowFrom(a + theirs, mine - theirs, borrow);
    if (a[mine - 1] == 0) --mLength;
    return *this;
}

bigint& bigint::operator*=(unsigned short factor) {
    const std::size_t mine = size(*this);
    if (mine == 0) return *this;
    if (mine >= Access::capacity(mDigits)) {
        asLength(mine + 1);
        Access::reserve(*this, mine + 1);
    }
    Digit* const a = Access::digits(*this);
    const unsigned carry = multiplyDigits(a, mine, factor);
    if (carry != 0) {
        a[mine] = static_cast<Digit>(carry);
        ++mLength;
    }
    return *this;
}

// The rule multiplies by other's digits from the lowest on and shifts the sum
// up by one place before each further one. In closed form: the product with
// the digits reversed. Each shift adds a digit and the last sum may add one
// more, so n by m digits give n + m - 1, and another if it is not 0. The one
// exception: a sum that is the single digit 0 is not shifted, so that with
// n = 1 the leading zeros of the reversed digits leave no places behind.
void BigintAccess::multiply(const bigint& a, const bigint& b, bigint& product) {
    const std::size_t n = size(a);
    std::size_t m = size(b);
    if (n == 0 || m == 0) {
        setLength(product, 0);
        return;
    }
    const Digit* const row = digits(a);
    const Digit* factor = digits(b);
    if (n == 1) {
        while (m > 1 && (*factor == 0 || row[0] == 0)) ++factor, --m;
    }
    if (n + m <= kFewDigits) {
        Digit made[kFewDigits], reversed[kFewDigits];
        std::reverse_copy(factor, factor + m, reversed);
        multiplyRowsPlain(row, n, reversed, m, made);
        const std::size_t used = n + m;
        replaceDigits(product, made, used > 1 && made[used - 1] == 0 ? used - 1 : used);
    } else {
        bigint made = multiplied(row, n, factor, m);
        swap(product, made);
    }
}

bigint& bigint::operator*=(const bigint& other) {
    Access::multiply(*this, other, *this);
    return *this;
}

bigint& bigint::operator/=(const bigint& divisor) {
    bigint remainder;
    divmod(divisor, *this, remainder);
    return *this;
}

bigint& bigint::operator%=(const bigint& divisor) {
    bigint quotient;
    divmod(divisor, quotient, *this);
    return *this;
}

bigint bigint::operator+(const bigint& other) const {
    bigint sum(*this);
    sum += other;
    return sum;
}

bigint bigint::operator-(const bigint& other) const {
    bigint difference(*this);
    difference -= other;
    return difference;
}

bigint bigint::operator*(const bigint& other) const {
    bigint product;
    Access::multiply(*this, other, product);
    return product;
}

bigint bigint::operator*(unsigned short factor) const {
    bigint product(*this);
    product *= factor;
    return product;
}

bigint bigint::operator/(const bigint& divisor) const {
    bigint quotient, remainder;
    divmod(divisor, quotient, remainder);
    return quotient;
}

bigint bigint::operator%(const bigint& divisor) const {
    bigint quotient, remainder;
    divmod(divisor, quotient, remainder);
    return remainder;
}

void bigint::divmod(const bigint& divisor, bigint& quotient, bigint& remainder) const {
    const Digit* const d = Access::digits(divisor);
    const std::size_t n = trimmedCount(d, size(divisor)), length = size(*this);
    // Less by comparison needs no estimate in any place. Anything else does,
    // and that is where zeros on top of the divisor cannot stay.
    const bool divides = n != 0 && *this >= divisor;
    if (n == 0) Orlune::debug("bigint::divmod >> division by 0");
    if (!divides) {
        if (&remainder != this) replaceDigits(remainder, Access::digits(*this), length);
        quotient.mLength = 0;
        return;
    }
    // Made apart: the results may be the operands, and a report may throw.
    const std::size_t digits = length - n + 1;
    WorkRow work(digits + length + kDivideSpare);
    Digit *const result = work.digits(), *const rest = result + digits;
    std::fill_n(std::copy_n(Access::digits(*this), length, rest), kDivideSpare, Digit(0));
    const std::size_t left = divideRows(d, n, rest, length, result, reportNegativeResult);
    const std::size_t used = trimmedCount(result, digits);
    Access::reserve(quotient, used);
    replaceDigits(remainder, rest, left);
    replaceDigits(quotient, result, used);
}

void bigint::leftshift(int n) {
    if (n < 1 || mLength == 0 || (mLength == 1 && Access::digits(*this)[0] == 0)) return;
    const std::size_t mine = size(*this), count = mine + static_cast<std::size_t>(n);
    const std::int32_t length = asLength(count);
    Access::reserve(*this, count);
    Digit* const digits = Access::digits(*this);
    std::copy_backward(digits, digits + mine, digits + count);
    std::fill_n(digits, n, Digit(0));
    mLength = length;
}

void bigint::rightshift(int n) {
    if (n < 1) return;
    Digit* const digits = Access::digits(*this);
    if (n >= mLength || (mLength == 1 && digits[0] == 0)) {
        mLength = 0;
        return;
    }
    std::copy(digits + n, digits + mLength, digits);
    mLength -= n;
}

}  // namespace Vaskel
