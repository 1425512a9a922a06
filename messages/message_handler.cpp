// Which handler is installed. It is shared between the slot, the messages that
// are being handled and the disablers that keep it, and never changes while it
// lives: installing another one exchanges the pointer.

#include "messages/message_handler.h"

#include <utility>

namespace Vaskel {
namespace {

using SharedHandler = std::shared_ptr<const MessageHandler>;

// Constant-initialised and never destroyed: messages may come from static
// constructors and destructors of other libraries. They are dropped then.
union Slot {
    constexpr Slot() : installed{} {}
    ~Slot() {}
    SharedHandler installed;
};

constinit Slot gSlot;

// Releases the handler when the library is unloaded.
struct SlotCleaner {
    ~SlotCleaner() { SharedHandler(std::move(gSlot.installed)); }
} const gSlotCleaner;

// Handlers are values: a copy has state of its own.
SharedHandler copyOf(SharedHandler handler) {
    return handler ? std::make_shared<const MessageHandler>(*handler) : nullptr;
}

}  // namespace

std::shared_ptr<const MessageHandler> installedHandler() { return gSlot.installed; }

MessageHandlerRetainer::MessageHandlerRetainer(MessageHandler handler)
    : mHandler(std::move(handler)) {}
MessageHandlerRetainer::MessageHandlerRetainer(const MessageHandlerRetainer& other) = default;
MessageHandlerRetainer::MessageHandlerRetainer(MessageHandlerRetainer&& other) noexcept = default;
MessageHandlerRetainer& MessageHandlerRetainer::operator=(const MessageHandlerRetainer& other) =
    default;
MessageHandlerRetainer& MessageHandlerRetainer::operator=(MessageHandlerRetainer&& other) noexcept =
    default;
MessageHandlerRetainer::~MessageHandlerRetainer() = default;

MessageHandler MessageHandlerRetainer::GetMessageHandler() const { return mHandler; }

boost::optional<MessageHandlerRetainer> setMessageHandler(
    const boost::optional<MessageHandlerRetainer>& handler) {
    boost::optional<MessageHandlerRetainer> before;
    // Held, since copying a handler is the host's code, which may install another.
    if (const SharedHandler held = gSlot.installed) before = MessageHandlerRetainer(*held);
    SharedHandler next;
    if (handler) next = std::make_shared<const MessageHandler>(handler->GetMessageHandler());
    // Nothing fails from here on. The old handler goes at the end of the block,
    // when its destructor finds the new state.
    gSlot.installed.swap(next);
    return before;
}

boost::optional<MessageHandlerRetainer> setAdvancedMessageHandler(MessageTextHandler handler) {
    return setMessageHandler(MessageHandlerRetainer(MessageHandler(std::move(handler))));
}

bool ScopedMessagesDisabler::mActive = false;

// The handler itself is kept, not a copy, so that restoring it in the
// destructor allocates nothing.
ScopedMessagesDisabler::ScopedMessagesDisabler() noexcept : mKept(std::move(gSlot.installed)) {
    mActive = true;
}

ScopedMessagesDisabler::ScopedMessagesDisabler(const ScopedMessagesDisabler& other)
    : mKept(copyOf(other.mKept)) {}

ScopedMessagesDisabler& ScopedMessagesDisabler::operator=(const ScopedMessagesDisabler& other) {
    if (this != &other) mKept = copyOf(other.mKept);
    return *this;
}

ScopedMessagesDisabler::~ScopedMessagesDisabler() {
    gSlot.installed.swap(mKept);
    mActive = false;
}

}  // namespace Vaskel
