// Who asks the user, and questions put to him directly.

#include "messages/message_ask.h"

#include <cstdarg>
#include <string>

#include "vaskel/messages.h"

namespace Vaskel {
namespace {

MessageAskHandler* gAskHandler = nullptr;

}  // namespace

MessageAskHandler* askHandler() { return gAskHandler; }

MessageAskHandler::~MessageAskHandler() = default;

void SetMessageAskHandler(MessageAskHandler* handler) { gAskHandler = handler; }

int MessageAsk(const std::string& key, const std::string& text1, const std::string& text2,
               const char* text3, ...) {
    if (gAskHandler == nullptr) return MessageBlocks::kNoAnswer;
    va_list arguments;
    va_start(arguments, text3);
    try {
        const int answer =
            gAskHandler->AskMessage(text1.c_str(), text2.c_str(), text3, key.c_str(), arguments);
        va_end(arguments);
        return answer;
    } catch (...) {
        va_end(arguments);
        throw;
    }
}

}  // namespace Vaskel
