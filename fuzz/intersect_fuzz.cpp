// Whether outlines cross themselves: every form gives the plain sweep's answer
// and asks the system as often.

#include "embedded/host.h"
#include "fuzz/outline_reader.h"
#include "geometry/intersect_plain.h"
#include "geometry/intersect_simple.h"
#include "geometry/intersect_sweep.h"
#include "vaskel/geometry.h"

namespace {

using namespace Vaskel::Intersect;

int gPolls = 0;

struct Result {
    int answer, polls;
    friend bool operator==(const Result&, const Result&) = default;
};

template <class Form>
Result resultOf(Form form) {
    gPolls = 0;
    const int answer = form();
    return {answer, gPolls};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool counting = [] {
        Embedded::onPollCancel([] {
            ++gPolls;
            return false;
        });
        return true;
    }();
    require(counting);

    OutlineReader in(data, size);
    const std::vector<PathPtr> contours = in.contours(600);
    WalkedOutline walked;
    for (const PathPtr& contour : contours) walked.add(contour.get());
    Outline outline;
    outline.add(walked);

    const Result plain = resultOf([&] { return sweepPlain(outline); });
    if (withinExactRange(outline)) {
        require(resultOf([&] { return sweepOrdered(outline); }) == plain);
        require(resultOf([&] { return sweepInSteps(outline, 1 + in.flags()); }) == plain);
    }
    if (isSurelySimple(walked)) require(plain.answer == 0);
    if (contours.size() == 1)
        require(resultOf([&] { return Vaskel::intersect(contours[0].get()); }) == plain);
    return 0;
}
