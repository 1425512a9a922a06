// Questions to the user on the terminal, asked by the library's message blocks.

#ifndef SAMPLES_PROOF_QUESTIONS_H
#define SAMPLES_PROOF_QUESTIONS_H

#include <cstdio>

#include "vaskel/messages.h"

namespace Proof {

class Console;

/// What a question gives besides the library's -1 for "nobody to ask".
constexpr int kAnswerNo = 0, kAnswerYes = 1;

/// While it lives, it is the library's ask handler: text 1 is the question,
/// texts 2 and 3 are the words for yes and no, the further arguments are not
/// used. One at a time.
///
/// Asks on the console and reads lines of input until one begins either word,
/// or says y, yes, n or no; the end of input and an empty line are no. Where
/// console or input is no terminal nobody could answer: the answer is no, and
/// nothing is shown.
class QuestionsOnConsole : public Vaskel::MessageAskHandler {
 public:
    explicit QuestionsOnConsole(Console& console, std::FILE* input = stdin);
    ~QuestionsOnConsole() override;
    QuestionsOnConsole(const QuestionsOnConsole&) = delete;
    QuestionsOnConsole& operator=(const QuestionsOnConsole&) = delete;

    int AskMessage(const char* question, const char* yes, const char* no, const char* key,
                   va_list arguments) override;

 private:
    Console& mConsole;
    std::FILE* mInput;
};

}  // namespace Proof

#endif
