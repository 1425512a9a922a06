// The platform check: whether a host's Orlune, Pemmit and LibICCProfile keep
// the contracts that the engines rely on and platform/ declares.
//
// Each test is named by the call and the contract that it checks. The last
// lines name the contracts that are not kept, one a line, and those that the
// adapter gave no means to check; the exit code is 0 when all that were
// checked are kept. Options are those of doctest; --test-case=*scan* picks.

#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "adapter.h"
#include "check.h"

namespace {

std::vector<std::string> gNotKept;
std::vector<std::string> gNotChecked;
std::string gRunning;
int gStarted = 0;

struct Summary : doctest::IReporter {
    explicit Summary(const doctest::ContextOptions&) {}
    void test_case_start(const doctest::TestCaseData& data) override {
        ++gStarted;
        gRunning = data.m_name;
    }
    void test_case_end(const doctest::CurrentTestCaseStats& stats) override {
        if (stats.failure_flags != 0) gNotKept.push_back(gRunning);
    }

    void report_query(const doctest::QueryData&) override {}
    void test_run_start() override {}
    void test_run_end(const doctest::TestRunStats&) override {}
    void test_case_reenter(const doctest::TestCaseData&) override {}
    void test_case_exception(const doctest::TestCaseException&) override {}
    void subcase_start(const doctest::SubcaseSignature&) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData&) override {}
    void log_message(const doctest::MessageData&) override {}
    void test_case_skipped(const doctest::TestCaseData&) override {}
};

REGISTER_LISTENER("summary", 1, Summary);

}  // namespace

void Check::notChecked(const char* reason) {
    gNotChecked.push_back(gRunning + " (" + reason + ")");
}

int main(int argc, char** argv) {
    doctest::Context context(argc, argv);
    Adapter::begin();
    const int result = context.run();
    if (context.shouldExit()) return result;
    for (const std::string& name : gNotChecked) std::printf("NOT CHECKED: %s\n", name.c_str());
    for (const std::string& name : gNotKept) std::printf("NOT KEPT: %s\n", name.c_str());
    if (gStarted == 0) std::puts("no contract matches the filter");
    return gStarted == 0 ? 1 : result;
}
