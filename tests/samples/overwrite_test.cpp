#include "samples/proof/overwrite.h"

#include <doctest/doctest.h>

#include "samples/proof/failure.h"
#include "samples/proof/questions.h"
#include "tests/samples/pictures.h"

using namespace Proof;

namespace {

// Answers as it is told and remembers what it was asked.
class Answering : public Vaskel::MessageAskHandler {
 public:
    explicit Answering(int answer) : mAnswer(answer) { Vaskel::SetMessageAskHandler(this); }
    ~Answering() override { Vaskel::SetMessageAskHandler(nullptr); }
    int AskMessage(const char* question, const char* yes, const char* no, const char* key,
                   va_list) override {
        questions.push_back(std::string(question) + " " + yes + "/" + no + " " + key);
        return mAnswer;
    }
    std::vector<std::string> questions;

 private:
    int mAnswer;
};

std::string refusal(const std::vector<std::string>& outputs, bool force = false) {
    try {
        requirePermission(outputs, force);
    } catch (const Failure& failure) {
        CHECK(failure.code() == kExitFailed);
        return failure.what();
    }
    return "";
}

}  // namespace

TEST_CASE("nothing is asked where nothing would be replaced") {
    const TempFolder folder;
    const Answering nobody(kAnswerNo);
    CHECK(refusal({}) == "");
    CHECK(refusal({folder / "new", "-", "/dev/null", folder / "missing/new"}) == "");
    writeFile(folder / "old", "old");
    CHECK(refusal({folder / "old"}, true) == "");
    CHECK(nobody.questions.empty());
}

TEST_CASE("one question is asked for all outputs of a batch, and a new one for the next batch") {
    const TempFolder folder;
    std::vector<std::string> outputs;
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        outputs.push_back(folder / name);
        writeFile(outputs.back(), "old");
    }
    const std::string a = outputs[0], b = outputs[1], c = outputs[2];
    struct Row {
        std::vector<std::string> outputs;
        std::string question;
        std::string refusal;
    };
    const Row rows[] = {
        {{a, folder / "new"},
         a + " exists. Replace it? yes/no overwrite",
         "nothing was written: " + a + " exists (--force replaces it)"},
        {{a, a},
         a + " exists. Replace it? yes/no overwrite",
         "nothing was written: " + a + " exists (--force replaces it)"},
        {{a, "-", b},
         a + " and " + b + " exist. Replace them? all/none overwrite",
         "nothing was written: " + a + " and " + b + " exist (--force replaces them)"},
        {outputs, a + ", " + b + ", " + c + " and 2 more exist. Replace them? all/none overwrite",
         "nothing was written: " + a + ", " + b + ", " + c +
             " and 2 more exist (--force replaces them)"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.question);
        for (const int answer : {kAnswerYes, kAnswerNo, kAnswerYes}) {
            const Answering user(answer);
            CHECK(refusal(row.outputs) == (answer == kAnswerYes ? "" : row.refusal));
            CHECK(user.questions == std::vector<std::string>{row.question});
        }
    }
}

TEST_CASE("without anybody to ask nothing is replaced, whatever was answered before") {
    const TempFolder folder;
    writeFile(folder / "old", "old");
    {
        const Answering user(kAnswerYes);
        CHECK(refusal({folder / "old"}) == "");
    }
    CHECK(refusal({folder / "old"}) != "");
}

TEST_CASE("control characters of a file name do not reach the terminal") {
    const TempFolder folder;
    writeFile(folder / "a\nb", "old");
    const Answering user(kAnswerNo);
    CHECK(refusal({folder / "a\nb"}).find('\n') == std::string::npos);
    REQUIRE(user.questions.size() == 1);
    CHECK(user.questions[0].find("a?b") != std::string::npos);
}
