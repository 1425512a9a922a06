// The doctest main of every test program. A run that finds no test fails, so
// that a misspelt filter cannot pass.

#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include <cstdio>

namespace {

// Counts the tests that a run started.
int gTestsStarted = 0;

struct StartCounter : doctest::IReporter {
    explicit StartCounter(const doctest::ContextOptions&) {}
    void test_case_start(const doctest::TestCaseData&) override { ++gTestsStarted; }

    void report_query(const doctest::QueryData&) override {}
    void test_run_start() override {}
    void test_run_end(const doctest::TestRunStats&) override {}
    void test_case_reenter(const doctest::TestCaseData&) override {}
    void test_case_end(const doctest::CurrentTestCaseStats&) override {}
    void test_case_exception(const doctest::TestCaseException&) override {}
    void subcase_start(const doctest::SubcaseSignature&) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData&) override {}
    void log_message(const doctest::MessageData&) override {}
    void test_case_skipped(const doctest::TestCaseData&) override {}
};

REGISTER_LISTENER("start-counter", 1, StartCounter);

}  // namespace

int main(int argc, char** argv) {
    doctest::Context context(argc, argv);
    const int result = context.run();
    if (!context.shouldExit() && result == 0 && gTestsStarted == 0) {
        std::puts("no test matches the filter");
        return 1;
    }
    return result;
}
