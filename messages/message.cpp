// Messages: a text is formatted into a buffer on the stack and handed to the
// installed handler. Nothing of the caller's arguments is in use while host
// code runs, so that it may throw at any point.

#include "vaskel/messages.h"

#include <cstdarg>
#include <memory>
#include <string>

#include "messages/counted_format.h"
#include "messages/message_handler.h"
#include "platform/orlune.h"
#include "util/narrow.h"

namespace Vaskel {
namespace {

MessageIDConvertor* gConvertor = nullptr;

// Apart from dispatch, which then has few registers to save for texts.
[[gnu::noinline]] void dispatchError(const MessageErrorHandler& takeError, MessageSeverity severity,
                                     MessageVolatility volatility, const char* text) {
    takeError(std::make_shared<Error>(severity, volatility, std::string(text)));
}

void dispatch(MessageSeverity severity, MessageVolatility volatility, const char* text) {
    const HandlerCall call;
    const MessageHandler* const handler = call.handler();
    if (!handler) return;
    if (const auto* takeText = boost::get<MessageTextHandler>(handler))
        (*takeText)(text, severity, volatility);
    else if (const auto* takeError = boost::get<MessageErrorHandler>(handler))
        dispatchError(*takeError, severity, volatility, text);
}

}  // namespace

MessageIDConvertor::~MessageIDConvertor() = default;

void SetMessageIDConvertor(MessageIDConvertor* convertor) { gConvertor = convertor; }

void message(MessageSeverity severity, MessageVolatility volatility, const char* format, ...) {
    MessageBuffer text;
    va_list arguments;
    va_start(arguments, format);
    const int count = formatCounted(text, format, arguments);
    va_end(arguments);
    // Only a text that fills the buffer exactly: longer ones count -1. Those who
    // watch the debugger output know the notice by that.
    // Test: "a text of exactly 1024 bytes brings the notice, a longer one none".
    if (count > kMessageLength - 1) Orlune::debugstring("Message: string too long. Click quit.");
    dispatch(severity, volatility, text);
}

void message(MessageSeverity severity, MessageVolatility volatility, long id, ...) {
    if (gConvertor == nullptr) return;
    const std::string format = gConvertor->ConvertMessageID(id);
    MessageBuffer text;
    va_list arguments;
    va_start(arguments, id);
    formatCounted(text, format.c_str(), arguments);
    va_end(arguments);
    message(severity, volatility, "%s [%d]", text, wrap32(id));
}

}  // namespace Vaskel
