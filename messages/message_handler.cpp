// Which handler is installed. It is shared between the slot and the disablers
// that keep it, and never changes while it lives: installing another one
// exchanges the pointer.

#include "messages/message_handler.h"

#include <utility>

namespace Vaskel {
namespace {

using SharedHandler = std::shared_ptr<const MessageHandler>;

// Releases the handler when the library is unloaded.
struct SlotCleaner {
    ~SlotCleaner() { HandlerCall::release(std::move(gHandlerSlot.installed)); }
} const gSlotCleaner;

// Handlers are values: a copy has state of its own.
SharedHandler copyOf(SharedHandler handler) {
    return handler ? std::make_shared<const MessageHandler>(*handler) : nullptr;
}

}  // namespace

constinit HandlerSlot gHandlerSlot;

constinit thread_local HandlerCall* HandlerCall::tInnermost = nullptr;

void HandlerCall::release(SharedHandler handler) noexcept {
    HandlerCall* outermost = nullptr;
    for (HandlerCall* call = tInnermost; call; call = call->mOuter)
        if (call->mHandler == handler.get()) outermost = call;
    if (outermost) outermost->mKept = std::move(handler);
}

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
    const HandlerCall held;
    if (held.handler()) before = MessageHandlerRetainer(*held.handler());
    SharedHandler next;
    if (handler) next = std::make_shared<const MessageHandler>(handler->GetMessageHandler());
    // Nothing fails from here on. The old handler goes when its destructor finds
    // the new state.
    gHandlerSlot.installed.swap(next);
    HandlerCall::release(std::move(next));
    return before;
}

boost::optional<MessageHandlerRetainer> setAdvancedMessageHandler(MessageTextHandler handler) {
    return setMessageHandler(MessageHandlerRetainer(MessageHandler(std::move(handler))));
}

bool ScopedMessagesDisabler::mActive = false;

// The handler itself is kept, not a copy, so that restoring it in the
// destructor allocates nothing.
ScopedMessagesDisabler::ScopedMessagesDisabler() noexcept
    : mKept(std::move(gHandlerSlot.installed)) {
    mActive = true;
}

ScopedMessagesDisabler::ScopedMessagesDisabler(const ScopedMessagesDisabler& other)
    : mKept(copyOf(other.mKept)) {}

ScopedMessagesDisabler& ScopedMessagesDisabler::operator=(const ScopedMessagesDisabler& other) {
    if (this == &other) return *this;
    SharedHandler next = copyOf(other.mKept);
    mKept.swap(next);
    HandlerCall::release(std::move(next));
    return *this;
}

ScopedMessagesDisabler::~ScopedMessagesDisabler() {
    gHandlerSlot.installed.swap(mKept);
    mActive = false;
    HandlerCall::release(std::move(mKept));
}

}  // namespace Vaskel
