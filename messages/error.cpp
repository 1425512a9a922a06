// Error objects, and finished messages shown through either kind of handler.

#include "vaskel/messages.h"

#include <cstdint>
#include <memory>
#include <string>

#include "messages/message_handler.h"
#include "messages/uni16_text.h"

namespace Vaskel {
namespace {

using BaseSeverity = Orlune::Core::Error::Severity;

BaseSeverity baseSeverity(MessageSeverity severity) {
    switch (static_cast<std::int32_t>(severity)) {
        case 0:
        case 1:
            return static_cast<BaseSeverity>(0);
        case 2:
            return static_cast<BaseSeverity>(2);
        case 4:
            return static_cast<BaseSeverity>(4);
        default:
            return static_cast<BaseSeverity>(3);
    }
}

// Not the reverse of baseSeverity: 0 comes back as 1. Handlers tell notes by it.
// Test: "severities map to the base and back by two tables of their own".
MessageSeverity shownSeverity(BaseSeverity severity) {
    switch (static_cast<std::int32_t>(severity)) {
        case 0:
            return static_cast<MessageSeverity>(1);
        case 1:
            return static_cast<MessageSeverity>(0);
        case 2:
            return static_cast<MessageSeverity>(2);
        case 4:
            return static_cast<MessageSeverity>(4);
        default:
            return static_cast<MessageSeverity>(3);
    }
}

}  // namespace

Error::Error(MessageSeverity severity, MessageVolatility volatility, const std::string& text)
    : Orlune::Core::Error(baseSeverity(severity)),
      mDescription(uni16FromUTF8(text)),
      mVolatility(volatility) {}

Error::Error(MessageSeverity severity, MessageVolatility volatility,
             const Orlune::Core::uni16string& text)
    : Orlune::Core::Error(baseSeverity(severity)), mDescription(text), mVolatility(volatility) {}

Error::Error(const Error& other) = default;

Error& Error::operator=(const Error& other) {
    Orlune::Core::uni16string description = other.mDescription;
    Orlune::Core::Error::operator=(other);
    mDescription.swap(description);
    mVolatility = other.mVolatility;
    return *this;
}

Error::~Error() = default;

Orlune::Core::uni16string Error::GetDescription() const { return mDescription; }
MessageVolatility Error::GetVolatility() const { return mVolatility; }

void ShowInfoMessage(const std::shared_ptr<Orlune::Core::Error>& error) {
    const HandlerCall call;
    const MessageHandler* const handler = call.handler();
    if (!handler) return;
    if (const auto* takeError = boost::get<MessageErrorHandler>(handler)) {
        (*takeError)(error);
    } else if (error != nullptr) {
        const std::string text = utf8FromUni16(error->GetDescription());
        // The object's own volatility is not asked, not even an Error's.
        // Test: "an error object reaches a text handler with volatility 1".
        boost::get<MessageTextHandler> (*handler)(text.c_str(), shownSeverity(error->GetSeverity()),
                                                  kMessageTransient);
    }
}

void ShowInfoMessage(MessageSeverity severity, MessageVolatility volatility,
                     const std::string& text) {
    const HandlerCall call;
    const MessageHandler* const handler = call.handler();
    if (!handler) return;
    if (const auto* takeText = boost::get<MessageTextHandler>(handler))
        (*takeText)(text.c_str(), severity, volatility);
    else
        boost::get<MessageErrorHandler> (*handler)(
            std::make_shared<Error>(severity, volatility, text));
}

void ShowInfoMessage(MessageSeverity severity, MessageVolatility volatility,
                     const Orlune::Core::uni16string& text) {
    if (gHandlerSlot.installed) ShowInfoMessage(severity, volatility, utf8FromUni16(text));
}

}  // namespace Vaskel
