// Message blocks opened, closed, asked and looked up in any order, also from
// within the ask handler, which may throw: the registry answers as the plain
// model does.
//
// Input: one byte an operation, followed by the bytes of its answer.

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tests/messages/blocks_model.h"
#include "vaskel/messages.h"

namespace {

using namespace Vaskel;

constexpr int kBlocks = 4;
const char* const kKeys[] = {"", "a", "b", "a key beyond any short string"};

void require(bool kept) {
    if (!kept) std::abort();
}

struct HandlerFailure {};

class Uses : public MessageAskHandler {
 public:
    Uses(const std::uint8_t* data, std::size_t size) : mData(data), mEnd(data + size) {}

    void run() {
        while (mData != mEnd) step();
    }

    int AskMessage(const char*, const char*, const char*, const char* key, va_list) override {
        require(mExpected && mKey == key);
        mExpected = false;
        const int choice = next();
        {
            const Deeper deeper(mDepth);
            for (int i = choice & 3; i > 0 && mDepth < 4; --i) step();
        }
        if ((choice & 12) == 12) throw HandlerFailure{};
        return mAnswer = choice >> 4 & 3;
    }

 private:
    // How many questions are being asked, one in the other.
    struct Deeper {
        explicit Deeper(int& depth) : mDepth(depth) { ++mDepth; }
        ~Deeper() { --mDepth; }
        int& mDepth;
    };

    int next() { return mData == mEnd ? 0 : *mData++; }

    void step() {
        const int operation = next();
        const int id = operation >> 2 & (kBlocks - 1);
        MessageBlocks& blocks = *MessageBlocks::Instance();
        switch (operation & 3) {
            case 0:
                blocks.ActivateBlock(id);
                mModel.activate(id);
                break;
            case 1:
                blocks.DeActivateBlock(id);
                mModel.deactivate(id);
                break;
            default:
                ask(blocks, id, kKeys[operation >> 4 & 3]);
        }
        for (int i = 0; i <= kBlocks; ++i) {
            require(blocks.Exists(i) == mModel.exists(i));
            for (const char* key : kKeys)
                require(blocks.GetMessageAnswer(i, key) == mModel.answer(i, key));
        }
    }

    void ask(MessageBlocks& blocks, int id, const char* key) {
        mExpected = mModel.asks(id);
        mKey = key;
        const bool asks = mExpected;
        try {
            blocks.MessageAsk(id, key, nullptr, nullptr, nullptr);
            require(!mExpected);
            if (asks) mModel.answered(key, mAnswer);
        } catch (const HandlerFailure&) {
            require(asks);
            if (mDepth > 0) throw;  // through the outer question, too
        }
    }

    const std::uint8_t* mData;
    const std::uint8_t* mEnd;
    BlocksModel mModel;
    bool mExpected = false;  // the next question is still to come
    std::string mKey;
    int mAnswer = 0;
    int mDepth = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MessageBlocks pristine(*MessageBlocks::Instance());
    *MessageBlocks::Instance() = pristine;
    Uses uses(data, size);
    SetMessageAskHandler(&uses);
    uses.run();
    SetMessageAskHandler(nullptr);
    return 0;
}
