#include "samples/proof/make/choices.h"

#include <doctest/doctest.h>

#include "samples/proof/failure.h"
#include "vaskel/units.h"

using namespace Proof;

TEST_CASE("a choice shows its entries with the chosen one marked") {
    Choice intent = intentChoice();
    CHECK(intent.chosen() == "relative");
    CHECK(intent.line() == "perceptual  [relative]  saturation  absolute");
    CHECK(intent.list() ==
          "rendering intent (--intent)\n"
          "    perceptual\n  * relative\n    saturation\n    absolute\n");
    int changes = 0;
    const boost::signals2::scoped_connection counting =
        intent.model.mChanged.connect([&changes] { ++changes; });
    intent.choose("perceptual");
    CHECK(intent.model.GetSelection() == 0);
    CHECK(intent.line() == "[perceptual]  relative  saturation  absolute");
    intent.choose("perceptual");
    intent.choose("absolute");
    CHECK(intent.model.GetSelection() == 3);
    CHECK(changes == 2);
}

TEST_CASE("a choice that there is not is refused with those that there are") {
    Choice intent = intentChoice();
    for (const char* text : {"", "rel", "Relative", "relative\n"}) {
        CAPTURE(text);
        CHECK_THROWS_AS(intent.choose(text), Failure);
        CHECK(intent.chosen() == "relative");
    }
    try {
        intent.choose("a\tb");
        FAIL("not refused");
    } catch (const Failure& failure) {
        CHECK(failure.what() ==
              std::string("--intent takes perceptual, relative, saturation or absolute, not "
                          "\"a?b\""));
        CHECK(failure.code() == kExitUsage);
    }
}

TEST_CASE("the units to choose among have the library's numbers and names") {
    Choice unit = unitChoice();
    CHECK(unit.chosen() == "mm");
    const int before = Vaskel::getuni();
    int count = 0;
    for (int i = 0; i < unit.model.GetNumberOfOptions(); ++i, ++count) {
        unit.model.SetSelection(unit.model.GetValueByIndex(i));
        CHECK(unit.model.GetValueIndex() == i);
        Vaskel::setuni(unit.model.GetSelection());
        CHECK(unit.chosen() == Vaskel::GetDistinctUnitString());
    }
    Vaskel::setuni(before);
    CHECK(count == 10);
}
