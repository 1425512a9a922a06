// Handlers that write down what reaches them, for the tests of messages.

#ifndef TESTS_MESSAGES_RECORDER_H
#define TESTS_MESSAGES_RECORDER_H

#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "vaskel/messages.h"

/// A message as a text handler gets it.
struct Delivered {
    std::string text;
    int severity;
    int volatility;

    friend bool operator==(const Delivered&, const Delivered&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Delivered& d) {
        return out << '"' << d.text << "\" severity " << d.severity << " volatility "
                   << d.volatility;
    }
};

constexpr Vaskel::MessageSeverity severity(int value) {
    return static_cast<Vaskel::MessageSeverity>(value);
}
constexpr Vaskel::MessageVolatility volatility(int value) {
    return static_cast<Vaskel::MessageVolatility>(value);
}

/// Sends a lasting note.
inline void report(const char* text) {
    Vaskel::message(Vaskel::kMessageNote, Vaskel::kMessageLasting, "%s", text);
}

/// A handler as setMessageHandler takes it.
inline boost::optional<Vaskel::MessageHandlerRetainer> retained(Vaskel::MessageHandler handler) {
    return Vaskel::MessageHandlerRetainer(std::move(handler));
}

/// Collects messages; at its end no handler is installed.
class Recorder {
 public:
    Recorder() { Vaskel::setMessageHandler(boost::none); }
    ~Recorder() { Vaskel::setMessageHandler(boost::none); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void takeTexts() { Vaskel::setMessageHandler(retained(textHandler())); }
    void takeErrors() { Vaskel::setMessageHandler(retained(errorHandler())); }

    Vaskel::MessageHandler textHandler() {
        return Vaskel::MessageTextHandler(
            [this](const char* text, Vaskel::MessageSeverity s, Vaskel::MessageVolatility v) {
                mTexts.push_back({text, s, v});
            });
    }
    Vaskel::MessageHandler errorHandler() {
        return Vaskel::MessageErrorHandler(
            [this](const std::shared_ptr<Orlune::Core::Error>& error) {
                mErrors.push_back(error);
            });
    }

    std::vector<Delivered> texts() { return std::exchange(mTexts, {}); }
    std::vector<std::shared_ptr<Orlune::Core::Error>> errors() {
        return std::exchange(mErrors, {});
    }

 private:
    std::vector<Delivered> mTexts;
    std::vector<std::shared_ptr<Orlune::Core::Error>> mErrors;
};

/// Gives one format for every number and remembers the numbers.
class FixedConvertor : public Vaskel::MessageIDConvertor {
 public:
    explicit FixedConvertor(std::string format) : mFormat(std::move(format)) {
        Vaskel::SetMessageIDConvertor(this);
    }
    ~FixedConvertor() override { Vaskel::SetMessageIDConvertor(nullptr); }
    FixedConvertor(const FixedConvertor&) = delete;
    FixedConvertor& operator=(const FixedConvertor&) = delete;

    std::string ConvertMessageID(long id) override {
        mIds.push_back(id);
        return mFormat;
    }
    std::vector<long> ids() { return std::exchange(mIds, {}); }

 private:
    std::string mFormat;
    std::vector<long> mIds;
};

#endif
