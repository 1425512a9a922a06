// Orlune: error objects, units and file URLs.

#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>

#include "check.h"
#include "platform/orlune/error.h"
#include "platform/orlune/unit.h"
#include "platform/orlune/url.h"

namespace {

using Orlune::Core::Error;

std::int64_t now() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

// As the engines derive from it.
struct Derived : Error {
    using Error::Error;
    Orlune::Core::uni16string GetDescription() const override {
        return Orlune::Core::uni16string(3, wchar_t(0x20AC));
    }
};

}  // namespace

TEST_CASE("Orlune::Core::Error: severity, texts and the time of its making") {
    for (int severity : {0, 1, 2, 3, 4, 77, -1, INT32_MAX}) {
        CAPTURE(severity);
        const std::int64_t before = now();
        const Error error(static_cast<Error::Severity>(severity));
        CHECK(error.GetSeverity() == severity);
        CHECK(error.GetTimeStamp() >= before);
        CHECK(error.GetTimeStamp() <= now());
        REQUIRE(error.what() != nullptr);
        CHECK(std::strlen(error.what()) > 0);
        CHECK(error.GetDescription().empty());
        CHECK(error.GetTitle() == error.GetTitle());
    }
}

TEST_CASE("Orlune::Core::Error: copies and clones keep severity, title and time stamp") {
    const Derived error(Error::kWarning);
    const std::int64_t made = error.GetTimeStamp();
    while (now() == made) {
    }
    const Derived copy(error);
    CHECK(copy.GetTimeStamp() == made);
    CHECK(copy.GetSeverity() == Error::kWarning);
    CHECK(copy.GetTitle() == error.GetTitle());
    Derived assigned(Error::kNote);
    assigned = error;
    CHECK(assigned.GetTimeStamp() == made);
    CHECK(assigned.GetSeverity() == Error::kWarning);

    const std::shared_ptr<Error> clone = error.Clone();
    REQUIRE(clone);
    CHECK(clone->GetTimeStamp() == made);
    CHECK(clone->GetSeverity() == Error::kWarning);
    CHECK(clone->GetTitle() == error.GetTitle());
    // Of the base class, whatever the class of the original.
    CHECK(clone->GetDescription().empty());
    CHECK(dynamic_cast<const Derived*>(clone.get()) == nullptr);
}

TEST_CASE("Orlune::Core::Error: is caught as std::exception and answers as what it is") {
    try {
        throw Derived(Error::kError);
    } catch (const std::exception& caught) {
        const auto* const error = dynamic_cast<const Error*>(&caught);
        REQUIRE(error != nullptr);
        CHECK(error->GetDescription() == Orlune::Core::uni16string(3, wchar_t(0x20AC)));
        CHECK(std::strlen(error->what()) > 0);
    }
}

TEST_CASE("Orlune::Unit: powers of the base units and a scale") {
    using Orlune::Unit;
    Unit unit;
    CHECK(unit.GetScale() == 1);
    for (int base = 0; base < Unit::kBaseUnits; ++base)
        CHECK(unit.GetPower(static_cast<Unit::BaseUnit>(base)) == 0);
    unit.SetPower(Unit::kLength, 1);
    unit.SetPower(Unit::kTime, -2);
    unit.SetPower(Unit::kLuminousIntensity, 1000000007);
    unit.SetScale(0.0254 / 2400);
    const Unit copy = unit;
    CHECK(copy.GetPower(Unit::kLength) == 1);
    CHECK(copy.GetPower(Unit::kMass) == 0);
    CHECK(copy.GetPower(Unit::kTime) == -2);
    CHECK(copy.GetPower(Unit::kLuminousIntensity) == 1000000007);
    CHECK(copy.GetScale() == 0.0254 / 2400);
}

TEST_CASE("Orlune::Unit: another base unit changes nothing and has power 0") {
    using Orlune::Unit;
    Unit unit;
    for (int base : {-1, 7, 8, 1000, -1000}) {
        CAPTURE(base);
        unit.SetPower(static_cast<Unit::BaseUnit>(base), 5);
        CHECK(unit.GetPower(static_cast<Unit::BaseUnit>(base)) == 0);
    }
    for (int base = 0; base < Unit::kBaseUnits; ++base)
        CHECK(unit.GetPower(static_cast<Unit::BaseUnit>(base)) == 0);
    CHECK(unit.GetScale() == 1);
}

TEST_CASE("Orlune::FileSpecURL: holds a copy of the URL until it is reset") {
    Orlune::FileSpecURL url;
    CHECK(url.GetURL().empty());
    char text[] = "file:///docs/a%20b";
    url = text;
    text[0] = 'X';
    CHECK(url.GetURL() == "file:///docs/a%20b");
    Orlune::FileSpecURL copy(url);
    Orlune::FileSpecURL assigned;
    assigned = url;
    url.Reset();
    CHECK(url.GetURL().empty());
    CHECK(copy.GetURL() == "file:///docs/a%20b");
    CHECK(assigned.GetURL() == "file:///docs/a%20b");
    url = "";
    CHECK(url.GetURL().empty());
}

TEST_CASE("Orlune::FileSpecURL: a derived class hears of its reset") {
    struct Heard : Orlune::FileSpecURL {
        using Orlune::FileSpecURL::operator=;
        int resets = 0;
        void Reset() override {
            ++resets;
            FileSpecURL::Reset();
        }
    };
    Heard heard;
    heard = "http://server/leaf";
    Orlune::FileSpecURL& base = heard;
    base.Reset();
    CHECK(heard.resets == 1);
    CHECK(base.GetURL().empty());
}
