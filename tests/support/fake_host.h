// A host for tests, on top of the embedded platform: records what the engines
// call, in order, and can throw or cancel at a chosen call.

#ifndef TESTS_SUPPORT_FAKE_HOST_H
#define TESTS_SUPPORT_FAKE_HOST_H

#include <string>
#include <utility>
#include <vector>

/// What FakeHost throws when asked to.
struct HostFailure {};

/// Sets the platform's handlers while it lives and restores the defaults at
/// its end; one at a time. ppi 0 leaves the document resolution at 2400.
class FakeHost {
 public:
    struct Settings {
        int ppi = 0;
        int throwAtCall = 0;   // the n-th platform call of any kind throws, from 1
        int cancelAtPoll = 0;  // the n-th poll and all later ones cancel, from 1
    };

    FakeHost() : FakeHost(Settings{}) {}
    explicit FakeHost(Settings settings);
    ~FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    /// Everything so far, for instance "beep 500", "debug TEXT",
    /// "progress 12.5", "poll".
    const std::vector<std::string>& calls() const { return mCalls; }
    std::vector<std::string> takeCalls() { return std::exchange(mCalls, {}); }

    /// How often the host beeped since the last question.
    int takeBeeps() { return std::exchange(mBeeps, 0); }
    /// The debugger lines since the last question.
    std::vector<std::string> takeDebugLines() { return std::exchange(mDebugLines, {}); }
    int polls() const { return mPolls; }

 private:
    void note(std::string call);

    Settings mSettings;
    std::vector<std::string> mCalls;
    std::vector<std::string> mDebugLines;
    int mCallCount = 0;
    int mBeeps = 0;
    int mPolls = 0;
};

/// Makes the n-th operator new of this thread from now on throw
/// std::bad_alloc, once. n is 1 for the next one. Meanwhile each contour of the
/// embedded document model is an allocation of its own.
class FailingAllocation {
 public:
    explicit FailingAllocation(long n);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether the n-th allocation came and failed.
    bool happened() const;

 private:
    bool mPool;
};

/// How many times operator new succeeded on this thread since its start.
long allocationCount();

/// Calls body with the first allocation failing, then the second, and so on
/// until it ends without one; returns how many failures it took. body catches
/// the std::bad_alloc itself.
template <class Body>
int failEachAllocation(Body body) {
    for (int n = 1;; ++n) {
        FailingAllocation failing(n);
        body();
        if (!failing.happened()) return n - 1;
    }
}

#endif
