// A host that answers questions and writes them down, for the tests.

#ifndef TESTS_MESSAGES_ASKER_H
#define TESTS_MESSAGES_ASKER_H

#include <cstdarg>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "vaskel/messages.h"

/// Answers with answer, or with what body returns. Questions are kept as
/// "text1|text2|text3|key", a null pointer as "(null)". Set as the ask handler
/// while it lives.
class Asker : public Vaskel::MessageAskHandler {
 public:
    Asker() { Vaskel::SetMessageAskHandler(this); }
    ~Asker() override { Vaskel::SetMessageAskHandler(nullptr); }
    Asker(const Asker&) = delete;
    Asker& operator=(const Asker&) = delete;

    int AskMessage(const char* text1, const char* text2, const char* text3, const char* key,
                   va_list arguments) override {
        std::string question;
        for (const char* text : {text1, text2, text3, key}) {
            question += text ? text : "(null)";
            question += '|';
        }
        question.pop_back();
        mQuestions.push_back(question);
        if (formatsText1) {
            char text[200];
            std::vsnprintf(text, sizeof text, text1, arguments);
            mFormatted.push_back(text);
        }
        return body ? body() : answer;
    }

    /// The questions since the last call.
    std::vector<std::string> questions() { return std::exchange(mQuestions, {}); }
    std::vector<std::string> formatted() { return std::exchange(mFormatted, {}); }

    int answer = 1;
    std::function<int()> body;
    bool formatsText1 = false;  ///< text 1 is a format for the further arguments

 private:
    std::vector<std::string> mQuestions;
    std::vector<std::string> mFormatted;
};

#endif
