#include "tests/support/fake_host.h"

#include <cstdio>

#include "embedded/host.h"

FakeHost::FakeHost(Settings settings) : mSettings(settings) {
    if (mSettings.ppi > 0) Embedded::setResolution(mSettings.ppi);
    Embedded::onBeep([this](int tone) {
        ++mBeeps;
        note("beep " + std::to_string(tone));
    });
    Embedded::onDebugLine([this](const char* line) {
        mDebugLines.push_back(line);
        note(std::string("debug ") + line);
    });
    Embedded::onProgress([this](float percent) {
        char text[40];
        std::snprintf(text, sizeof text, "progress %g", static_cast<double>(percent));
        note(text);
    });
    Embedded::onPollCancel([this] {
        ++mPolls;
        note("poll");
        return mSettings.cancelAtPoll > 0 && mPolls >= mSettings.cancelAtPoll;
    });
}

FakeHost::~FakeHost() {
    Embedded::onBeep({});
    Embedded::onDebugLine({});
    Embedded::onProgress({});
    Embedded::onPollCancel({});
    Embedded::setResolution(2400);
}

void FakeHost::note(std::string call) {
    mCalls.push_back(std::move(call));
    if (++mCallCount == mSettings.throwAtCall) throw HostFailure{};
}
