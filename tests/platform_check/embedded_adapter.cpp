// The platform check's adapter for the embedded platform.

#include "adapter.h"

#include <utility>

#include "embedded/document.h"
#include "embedded/host.h"
#include "embedded/profiles.h"

namespace {

std::vector<int> gBeeps;
std::vector<std::string> gDebugLines;
std::vector<float> gProgress;
bool gCancelled = false;

}  // namespace

namespace Adapter {

void begin() {
    Embedded::onBeep([](int tone) { gBeeps.push_back(tone); });
    Embedded::onDebugLine([](const char* line) { gDebugLines.push_back(line); });
    Embedded::onProgress([](float percent) { gProgress.push_back(percent); });
    Embedded::onPollCancel([] { return gCancelled; });
}

bool setResolution(int ppi) {
    Embedded::setResolution(ppi);
    return true;
}

std::optional<std::vector<int>> takeBeeps() { return std::exchange(gBeeps, {}); }
std::optional<std::vector<std::string>> takeDebugLines() { return std::exchange(gDebugLines, {}); }
std::optional<std::vector<float>> takeProgress() { return std::exchange(gProgress, {}); }

bool setCancelled(bool cancelled) {
    gCancelled = cancelled;
    return true;
}

bool addCurve(Pemmit::Path* path, int x1, int y1, int x2, int y2, int x3, int y3) {
    return Embedded::addCurve(path, x1, y1, x2, y2, x3, y3);
}
double flatness() { return 0.5; }

Pemmit::Path* makeCompound() { return Embedded::makeCompound(); }
bool addChild(Pemmit::Object* parent, Pemmit::Object* child) {
    return Embedded::addChild(parent, child);
}

void* openProfile(std::uint32_t space) {
    switch (space) {
        case 0x52474220:
            return Embedded::makeSrgbProfile();
        case 0x47524159:
            return Embedded::makeGreyProfile();
        case 0x4C616220:
            return Embedded::makeLabProfile();
#ifdef PLATFORM_CHECK_CMYK_PROFILE
        case 0x434D594B:
            return Embedded::openProfile(PLATFORM_CHECK_CMYK_PROFILE);
#endif
        default:
            return nullptr;
    }
}

}  // namespace Adapter
