// The array below big integers.

#include <doctest/doctest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "encoding/bigint.h"
#include "tests/support/fake_host.h"
#include "vaskel/encoding.h"

using Array = Vaskel::arraytemplate<unsigned short>;
using Access = Vaskel::BigintAccess;
using Lines = std::vector<std::string>;

static_assert(std::has_virtual_destructor_v<Array>);
static_assert(std::has_virtual_destructor_v<Vaskel::bigint>);
static_assert(sizeof(Array) == 32);           // table, data, capacity, growth step
static_assert(sizeof(Vaskel::bigint) == 48);  // table, digits, length

TEST_CASE("array: writing grows it by multiples of its growth step") {
    struct Row {
        std::uint64_t step, index, capacity;
    };
    const Row kRows[] = {
        {10, 0, 10}, {10, 9, 10}, {10, 10, 20}, {10, 25, 30}, {10, 100, 110},
        {1, 0, 1},   {1, 6, 7},   {7, 7, 14},   {0, 3, 4}};  // a step of 0 counts as 1
    for (const Row& row : kRows) {
        CAPTURE(row.step);
        CAPTURE(row.index);
        Array array(row.step);
        CHECK(Access::capacity(array) == 0);
        CHECK(Access::data(array) == nullptr);
        array[row.index] = 4711;
        CHECK(Access::capacity(array) == row.capacity);
        for (std::uint64_t i = 0; i < row.capacity; ++i)
            CHECK(array[i] == (i == row.index ? 4711 : 0));
    }
}

TEST_CASE("array: growing keeps the elements and clears the new ones") {
    Array array;
    for (unsigned short i = 0; i < 10; ++i) array[i] = static_cast<unsigned short>(100 + i);
    array[10] = 7;
    CHECK(Access::capacity(array) == 20);
    for (unsigned short i = 0; i < 10; ++i) CHECK(array[i] == 100 + i);
    CHECK(array[10] == 7);
    for (unsigned i = 11; i < 20; ++i) CHECK(array[i] == 0);
    array[35] = 1;  // 16 missing, two steps
    CHECK(Access::capacity(array) == 40);
    CHECK(array[9] == 109);
}

TEST_CASE("array: reading beyond the capacity reports and gives 0") {
    FakeHost host;
    Array array;
    array[3] = 5;
    const Array& read = array;
    CHECK(read[3] == 5);
    CHECK(read[9] == 0);
    CHECK(host.takeDebugLines() == Lines{});
    CHECK(read[10] == 0);
    CHECK(read[4294967296] == 0);  // the low 32 bits are shown
    CHECK(host.takeDebugLines() ==
          Lines{"arraytemplate::operator[] >> invalid index: 10, size: 10",
                "arraytemplate::operator[] >> invalid index: 0, size: 10"});
    const Array empty;
    CHECK(empty[0] == 0);
    CHECK(host.takeDebugLines() == Lines{"arraytemplate::operator[] >> invalid index: 0, size: 0"});
    CHECK(Access::capacity(array) == 10);
}

TEST_CASE("array: copies have the same elements, capacity and growth step") {
    Array array(7);
    array[8] = 9;
    const Array copy(array);
    CHECK(Access::capacity(copy) == 14);
    CHECK(copy[8] == 9);
    Array other;
    other[50] = 1;
    other = array;
    CHECK(Access::capacity(other) == 14);
    CHECK(other[8] == 9);
    other[14] = 1;
    CHECK(Access::capacity(other) == 21);
    CHECK(Access::capacity(array) == 14);
    Array& same = other;
    other = same;
    CHECK(other[14] == 1);
    other = Array();
    CHECK(Access::capacity(other) == 0);
}

TEST_CASE("array: memory that ends leaves it as it was") {
    Array array;
    array[3] = 5;
    const int failures = failEachAllocation([&] {
        try {
            array[25] = 1;
        } catch (const std::bad_alloc&) {
            CHECK(Access::capacity(array) == 10);
        }
    });
    CHECK(failures == 1);
    CHECK(array[3] == 5);
    Array other;
    other[0] = 8;
    const int copying = failEachAllocation([&] {
        try {
            other = array;
        } catch (const std::bad_alloc&) {
            CHECK(other[0] == 8);
            CHECK(Access::capacity(other) == 10);
        }
    });
    CHECK(copying == 1);
    CHECK(other[25] == 1);
}

TEST_CASE("array: an index that no memory can hold is refused") {
    Array array;
    array[0] = 1;
    CHECK_THROWS_AS(array[~std::uint64_t{0}] = 1, std::bad_alloc);
    CHECK_THROWS_AS(array[~std::uint64_t{0} / 2] = 1, std::bad_alloc);
    CHECK(array[0] == 1);
    CHECK(Access::capacity(array) == 10);
}
