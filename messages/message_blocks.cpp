// The registry of message blocks and kept answers.
//
// The ask handler may do anything to the registry while it runs, assign to it
// included. So nothing of the maps is held across its call: what is needed
// afterwards is made before.

#include "vaskel/messages.h"

#include <cstdarg>
#include <map>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "messages/message_ask.h"

namespace Vaskel {
namespace {

using Answers = std::map<std::string, MessageBlocks::MessageAnswer, std::less<>>;

std::string_view keyText(const char* key) { return key != nullptr ? key : ""; }

// A map entry of its own, to be put into the answers without an allocation.
Answers::node_type makeAnswer(const char* key) {
    Answers answers;
    answers.emplace(keyText(key), MessageBlocks::kNoAnswer);
    return answers.extract(answers.begin());
}

}  // namespace

MessageBlocks* MessageBlocks::cInstance = nullptr;

MessageBlocks* MessageBlocks::Instance() {
    if (cInstance == nullptr) cInstance = new MessageBlocks;
    return cInstance;
}

MessageBlocks::MessageBlocks() = default;
MessageBlocks::MessageBlocks(const MessageBlocks& other) = default;

MessageBlocks& MessageBlocks::operator=(const MessageBlocks& other) {
    MessageBlocks copy(other);
    mActive.swap(copy.mActive);
    mAsked.swap(copy.mAsked);
    mAnswers.swap(copy.mAnswers);
    return *this;
}

MessageBlocks::~MessageBlocks() = default;

void MessageBlocks::ActivateBlock(int id) {
    bool& asked = mAsked[id];  // an entry of false alone tells nobody anything
    mActive[id] = true;
    asked = false;
}

void MessageBlocks::DeActivateBlock(int id) { mActive[id] = false; }

bool MessageBlocks::Exists(int id) const { return mActive.count(id) != 0; }

void MessageBlocks::MessageAsk(int id, const char* key, const char* text1, const char* text2,
                               const char* text3, ...) {
    MessageAskHandler* const handler = askHandler();
    if (handler == nullptr) return;
    if (const auto active = mActive.find(id); active != mActive.end()) {
        if (!active->second) return;
        if (const auto asked = mAsked.find(id); asked != mAsked.end() && asked->second) return;
    }
    Answers::node_type answer = makeAnswer(key);
    mAsked[id] = true;  // the last allocation: from here on only the handler fails
    va_list arguments;
    va_start(arguments, text3);
    try {
        answer.mapped() =
            static_cast<MessageAnswer>(handler->AskMessage(text1, text2, text3, key, arguments));
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    const auto kept = mAnswers.find(answer.key());
    if (kept != mAnswers.end())
        kept->second = answer.mapped();
    else
        mAnswers.insert(std::move(answer));
}

MessageBlocks::MessageAnswer MessageBlocks::GetMessageAnswer(int id, const char* key) {
    if (const auto active = mActive.find(id); active != mActive.end()) {
        if (!active->second) return kNoAnswer;
        const auto asked = mAsked.find(id);
        if (asked == mAsked.end() || !asked->second) return kNoAnswer;
    }
    const auto kept = mAnswers.find(keyText(key));
    return kept == mAnswers.end() ? kNoAnswer : kept->second;
}

MessageBlockDelimiter::MessageBlockDelimiter(int id) : mBlock(id) {
    MessageBlocks::Instance()->ActivateBlock(mBlock);
}

MessageBlockDelimiter::MessageBlockDelimiter(const MessageBlockDelimiter& other) = default;
MessageBlockDelimiter& MessageBlockDelimiter::operator=(const MessageBlockDelimiter& other) =
    default;

MessageBlockDelimiter::~MessageBlockDelimiter() {
    try {
        MessageBlocks::Instance()->DeActivateBlock(mBlock);
    } catch (const std::bad_alloc&) {
        // Memory is needed only where the host has taken the block's entry away
        // by assigning to the registry; then there is no open block to close.
    }
}

}  // namespace Vaskel
