// Messages made of any bytes: what reaches a handler is worked out beside, in
// the plainest way.
//
// Input: how often the text is repeated, the number, the text.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "embedded/host.h"
#include "vaskel/messages.h"

namespace {

using namespace Vaskel;

void require(bool kept) {
    if (!kept) std::abort();
}

std::string gText;  // what the text handler got last
int gNotices = 0;

void setUp() {
    static const bool once = [] {
        Embedded::onDebugLine([](const char* line) {
            require(std::strcmp(line, "Message: string too long. Click quit.") == 0);
            ++gNotices;
        });
        return true;
    }();
    require(once);
    setAdvancedMessageHandler(
        [](const char* text, MessageSeverity, MessageVolatility) { gText = text; });
    gNotices = 0;
}

// A format that gives text, or a part of it as an argument.
struct Convertor : MessageIDConvertor {
    explicit Convertor(const std::string& text) {
        for (const char c : text) {
            format += c;
            if (c == '%') format += '%';
        }
    }
    std::string ConvertMessageID(long) override { return format; }
    std::string format;
};

void checkLimit(const std::string& got, const std::string& whole) {
    require(got == whole.substr(0, 1024));
    require(gNotices == (whole.size() == 1024 ? 1 : 0));
}

void checkErrorObject(const std::string& text) {
    const auto error = std::make_shared<Error>(kMessageError, kMessageLasting, text);
    gText = "not called";
    ShowInfoMessage(error);
    const bool ascii = std::all_of(text.begin(), text.end(),
                                   [](char c) { return static_cast<signed char>(c) > 0; });
    require(gText == text || (gText.empty() && !ascii));
    require(error->GetDescription().empty() == gText.empty());

    // The same by way of 16-bit text and of an error-object handler.
    ShowInfoMessage(kMessageError, kMessageLasting, error->GetDescription());
    require(gText == text || (gText.empty() && !ascii));
    std::shared_ptr<Orlune::Core::Error> got;
    setMessageHandler(MessageHandlerRetainer(MessageErrorHandler(
        [&](const std::shared_ptr<Orlune::Core::Error>& shown) { got = shown; })));
    message(kMessageError, kMessageLasting, "%s", text.c_str());
    require(got->GetDescription() ==
            Error(kMessageError, kMessageLasting, text.substr(0, 1024)).GetDescription());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    setUp();
    const int number = static_cast<signed char>(data[1]);
    const std::string piece(reinterpret_cast<const char*>(data + 2),
                            strnlen(reinterpret_cast<const char*>(data + 2), size - 2));
    std::string text;
    for (int i = 0; i <= data[0] && text.size() < 5000; ++i) text += piece;

    message(kMessageNote, kMessageLasting, "%s", text.c_str());
    checkLimit(gText, text);

    gNotices = 0;
    Convertor convertor(text);
    SetMessageIDConvertor(&convertor);
    message(kMessageNote, kMessageLasting, static_cast<long>(number));
    SetMessageIDConvertor(nullptr);
    checkLimit(gText, text.substr(0, 1024) + " [" + std::to_string(number) + "]");

    ShowInfoMessage(kMessageNote, kMessageLasting, text);
    require(gText == text);
    checkErrorObject(text);
    setMessageHandler(boost::none);
    return 0;
}
