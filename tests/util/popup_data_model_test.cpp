#include <doctest/doctest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/fake_host.h"
#include "tests/support/guarded_bytes.h"
#include "vaskel/util.h"

using namespace Vaskel;

namespace {

constexpr int kThree[] = {5, 7, 9, 0};
constexpr const char* kThreeTexts[] = {"five", "seven", "nine", nullptr};

// How often a model has notified.
class Counter {
 public:
    explicit Counter(PopupDataModel& model)
        : mConnection(model.mChanged.connect([this] { ++mCount; })) {}
    int take() { return std::exchange(mCount, 0); }

 private:
    int mCount = 0;
    boost::signals2::scoped_connection mConnection;
};

struct FindRow {
    const char* why;
    std::vector<int> values;
    std::vector<const char*> texts;  // empty: a null pointer
    int value;
    int index;
    int options;
};

const FindRow kFinds[] = {
    {"the second", {5, 7, 0}, {"a", "b", nullptr}, 7, 1, 2},
    {"none", {5, 7, 0}, {"a", "b", nullptr}, 3, -1, 2},
    {"zero first is an option", {0, 4, 0}, {"a", "b", nullptr}, 0, 0, 2},
    {"behind zero first", {0, 4, 0}, {"a", "b", nullptr}, 4, 1, 2},
    {"zero first without a text is one too", {0, 4, 0}, {nullptr, "b", nullptr}, 4, 1, 0},
    {"zero with a text is an option", {5, 0, 7, 0}, {"a", "b", "c", nullptr}, 7, 2, 3},
    {"and is found", {5, 0, 7, 0}, {"a", "b", "c", nullptr}, 0, 1, 3},
    {"zero without a text ends the list", {5, 0, 7, 0}, {"a", nullptr, "c", nullptr}, 7, -1, 1},
    {"the end is no option", {5, 7, 0}, {"a", "b", nullptr}, 0, -1, 2},
    {"a value without a text is an option", {5, 7, 9, 0}, {"a", nullptr, "c", nullptr}, 9, 2, 1},
    {"the first of two", {5, 7, 7, 0}, {"a", "b", "c", nullptr}, 7, 1, 3},
    {"without texts", {5, 7, 0}, {}, 7, 1, 0},
    {"without texts, none", {5, 7, 0}, {}, 3, -1, 0},
    {"without texts, zero first", {0, 7, 0}, {}, 7, 1, 0},
    {"without texts, zero is the end", {5, 0, 7, 0}, {}, 7, -1, 0},
    {"negative values", {-5, -7, 0}, {}, -7, 1, 0},
    {"one option", {5, 0}, {"a", nullptr}, 5, 0, 1},
};

struct SelectRow {
    const char* why;
    int from;
    int value;
    int to;
    bool notifies;
};

constexpr SelectRow kSelections[] = {
    {"another", 0, 9, 2, true},
    {"the same", 2, 9, 2, false},
    {"unknown", 2, 3, 0, true},
    {"unknown at the first", 0, 3, 0, false},
    {"back to the first", 1, 5, 0, true},
    {"zero is not in the list", 1, 0, 0, true},
    {"an index outside the list", 50, 7, 1, true},
    {"an index outside, unknown", -1, 3, 0, true},
};

}  // namespace

TEST_CASE("options are found up to the end of the list") {
    for (const FindRow& row : kFinds) {
        CAPTURE(row.why);
        const PopupDataModel model(0, row.values.data(),
                                   row.texts.empty() ? nullptr : row.texts.data());
        CHECK(model.GetIndex(row.value) == row.index);
        CHECK(model.GetNumberOfOptions() == row.options);
    }
}

TEST_CASE("texts are read only where a value is zero") {
    // The pointer table begins at an unmapped page: any look at it would show.
    const GuardedBytes nowhere(0);
    const auto* const texts = reinterpret_cast<const char* const*>(nowhere.data());
    constexpr int values[] = {0, 5, 7};
    PopupDataModel model(0, values, texts);
    CHECK(model.GetIndex(0) == 0);
    CHECK(model.GetIndex(7) == 2);
    model.SetSelection(7);
    CHECK(model.GetSelection() == 7);

    // The same at the end of a table: the value that ends the list is the last
    // that is read, and its text the last too.
    GuardedBytes tail(sizeof(int) * 3);
    std::memcpy(tail.data(), kThree, sizeof(int) * 2);
    GuardedBytes pointers(sizeof(char*) * 3);
    std::memcpy(pointers.data(), kThreeTexts, sizeof(char*) * 2);
    const PopupDataModel exact(0, reinterpret_cast<const int*>(tail.data()),
                               reinterpret_cast<const char* const*>(pointers.data()));
    CHECK(exact.GetIndex(1) == -1);
    CHECK(exact.GetNumberOfOptions() == 2);
}

TEST_CASE("a selection notifies when the index moves") {
    for (const SelectRow& row : kSelections) {
        CAPTURE(row.why);
        for (bool byValue : {false, true}) {
            PopupDataModel model(row.from, kThree, kThreeTexts);
            Counter counter(model);
            if (byValue)
                model.SetValue(row.value);
            else
                model.SetSelection(row.value);
            CHECK(model.GetValueIndex() == row.to);
            CHECK(counter.take() == (row.notifies ? 1 : 0));
        }
    }
}

TEST_CASE("an unknown value falls back to the first option") {
    PopupDataModel model(2, kThree, kThreeTexts);
    Counter counter(model);
    model.SetSelection(3);
    CHECK(model.GetSelection() == 5);
    CHECK(counter.take() == 1);
    model.SetSelection(3);
    CHECK(counter.take() == 0);

    // Of a long the lowest 32 bits are the value.
    model.SetValue((1L << 32) + 9);
    CHECK(model.GetValueIndex() == 2);
    CHECK(counter.take() == 1);
    model.SetValue(LONG_MIN + 7);
    CHECK(model.GetValueIndex() == 1);
    model.SetValue(LONG_MIN + 6);
    CHECK(model.GetValueIndex() == 0);
}

TEST_CASE("of equal values the first is chosen, even if another is chosen already") {
    constexpr int values[] = {5, 5, 0};
    PopupDataModel model(1, values, nullptr);
    Counter counter(model);
    model.SetSelection(5);
    CHECK(model.GetValueIndex() == 0);
    CHECK(counter.take() == 1);
}

TEST_CASE("the chosen value and the tables are at hand") {
    PopupDataModel model(1, kThree, kThreeTexts);
    CHECK(model.GetValue() == 7);
    CHECK(model.GetSelection() == 7);
    CHECK(model.GetValueIndex() == 1);
    CHECK(model.GetValueByIndex(2) == 9);
    CHECK(std::string(model.GetDescription(2)) == "nine");
    CHECK(model.GetDescription(3) == nullptr);
    const PopupDataModel bare(0, kThree, nullptr);
    CHECK(bare.GetDescription(0) == nullptr);
    static_assert(std::is_same_v<decltype(model.GetValue()), long>);
}

TEST_CASE("derived models may answer for themselves") {
    struct Derived : PopupDataModel {
        using PopupDataModel::PopupDataModel;
        long GetValue() const override { return 1000 + PopupDataModel::GetValue(); }
        void SetValue(long value) override { PopupDataModel::SetValue(value - 1000); }
    };
    Derived derived(0, kThree, kThreeTexts);
    PopupDataModel& model = derived;
    model.SetValue(1009);
    CHECK(model.GetValue() == 1009);
    CHECK(model.GetSelection() == 9);
    model.SetSelection(7);  // not by way of SetValue
    CHECK(model.GetValueIndex() == 1);
}

TEST_CASE("a copy shares the tables but not the listeners") {
    PopupDataModel model(1, kThree, kThreeTexts);
    Counter counter(model);
    PopupDataModel copy(model);
    CHECK(copy.GetSelection() == 7);
    CHECK(copy.GetDescription(1) == model.GetDescription(1));
    CHECK(copy.mChanged.empty());
    copy.SetSelection(9);
    CHECK(counter.take() == 0);
    CHECK(model.GetSelection() == 7);

    PopupDataModel target(0, kThree, nullptr);
    Counter targetCounter(target);
    target = copy;
    CHECK(target.GetSelection() == 9);
    CHECK(target.GetDescription(0) == kThreeTexts[0]);
    CHECK(targetCounter.take() == 0);  // no notification
    target.SetSelection(5);
    CHECK(targetCounter.take() == 1);  // and its listeners stay
    PopupDataModel& self = target;
    target = self;
    CHECK(target.GetSelection() == 5);
}

TEST_CASE("a slot finds the choice stored, may choose again, and may throw") {
    PopupDataModel model(0, kThree, kThreeTexts);
    int calls = 0;
    boost::signals2::scoped_connection again(model.mChanged.connect([&] {
        ++calls;
        if (model.GetSelection() == 9) model.SetSelection(7);
    }));
    model.SetSelection(9);
    CHECK(model.GetSelection() == 7);
    CHECK(calls == 2);
    again.disconnect();

    struct Refusal {};
    model.mChanged.connect([] { throw Refusal{}; });
    CHECK_THROWS_AS(model.SetSelection(5), Refusal);
    CHECK(model.GetSelection() == 5);
}

TEST_CASE("a slot may destroy the model; listeners not yet reached are disconnected") {
    auto model = std::make_unique<PopupDataModel>(0, kThree, kThreeTexts);
    int before = 0, after = 0;
    model->mChanged.connect([&] { ++before; });
    const boost::signals2::connection killer = model->mChanged.connect([&] { model.reset(); });
    // More than have been reached: only then does the signal tidy its list up
    // at the end of the notification, when the model has long gone.
    std::vector<boost::signals2::connection> late;
    for (int i = 0; i < 5; ++i) late.push_back(model->mChanged.connect([&] { ++after; }));
    model->SetSelection(9);
    CHECK(model == nullptr);
    CHECK(before == 1);
    CHECK(after == 0);
    CHECK(!killer.connected());
    for (const boost::signals2::connection& connection : late) CHECK(!connection.connected());
}

TEST_CASE("destroying a model disconnects its listeners") {
    boost::signals2::connection connection;
    {
        PopupDataModel model(0, kThree, nullptr);
        connection = model.mChanged.connect([] {});
        CHECK(connection.connected());
    }
    CHECK(!connection.connected());
}

TEST_CASE("memory that ends before the slots run leaves the choice as it was") {
    PopupDataModel model(0, kThree, kThreeTexts);
    int calls = 0;
    model.mChanged.connect([&] { ++calls; });
    const int failures = failEachAllocation([&] {
        calls = 0;
        try {
            model.SetSelection(model.GetSelection() == 5 ? 9 : 5);
            CHECK(calls == 1);
        } catch (const std::bad_alloc&) {
            CHECK(calls == 0);
            CHECK(model.GetSelection() == 5);
        }
    });
    CHECK(failures >= 1);
    CHECK(model.GetSelection() == 9);
}
