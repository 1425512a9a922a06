#include "samples/proof/questions.h"

#include <unistd.h>

#include <cctype>
#include <optional>
#include <string>

#include "samples/proof/console.h"

namespace Proof {
namespace {

// The next line without blanks around it, in small letters; nothing at the end.
std::optional<std::string> nextLine(std::FILE* input) {
    std::string line;
    int c = std::fgetc(input);
    if (c == EOF) return std::nullopt;
    for (; c != EOF && c != '\n'; c = std::fgetc(input)) line += static_cast<char>(std::tolower(c));
    const std::size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos) return "";
    return line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

bool begins(const std::string& word, const std::string& answer) {
    return !answer.empty() && word.compare(0, answer.size(), answer) == 0;
}

}  // namespace

QuestionsOnConsole::QuestionsOnConsole(Console& console, std::FILE* input)
    : mConsole(console), mInput(input) {
    Vaskel::SetMessageAskHandler(this);
}

QuestionsOnConsole::~QuestionsOnConsole() { Vaskel::SetMessageAskHandler(nullptr); }

int QuestionsOnConsole::AskMessage(const char* question, const char* yes, const char* no,
                                   const char*, va_list) {
    if (!mConsole.terminal() || isatty(fileno(mInput)) != 1) return kAnswerNo;
    for (;;) {
        mConsole.prompt(std::string(question) + " [" + yes + "/" + no + "] ");
        const std::optional<std::string> answer = nextLine(mInput);
        if (!answer) mConsole.prompt("\n");
        if (!answer || answer->empty()) return kAnswerNo;
        if (begins(no, *answer) || begins("no", *answer)) return kAnswerNo;
        if (begins(yes, *answer) || begins("yes", *answer)) return kAnswerYes;
    }
}

}  // namespace Proof
