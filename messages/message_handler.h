// The installed handler, as the engines of this family reach it.

#ifndef MESSAGES_MESSAGE_HANDLER_H
#define MESSAGES_MESSAGE_HANDLER_H

#include <memory>

#include "vaskel/messages.h"

namespace Vaskel {

/// The slot of the installed handler, null for none. Constant-initialised and
/// never destroyed: messages may come from static constructors and destructors of
/// other libraries.
union HandlerSlot {
    constexpr HandlerSlot() : installed{} {}
    ~HandlerSlot() {}
    std::shared_ptr<const MessageHandler> installed;
};
extern constinit HandlerSlot gHandlerSlot;

/// The handler that was installed when the object was made, for a call. A handler
/// that is replaced or removed while it runs, by the host's code that it calls,
/// stays alive until the outermost of its calls returns.
///
/// Holding costs no more than a place in the thread's list of calls: two atomic
/// operations, as a copy of the shared pointer needs, would take as long as the
/// rest of a dispatch. Whoever gives up a handler looks through that list, on the
/// one thread where handlers are installed and removed.
class HandlerCall {
 public:
    HandlerCall() : mHandler(gHandlerSlot.installed.get()), mOuter(tInnermost) {
        tInnermost = this;
    }
    ~HandlerCall() { tInnermost = mOuter; }
    HandlerCall(const HandlerCall&) = delete;
    HandlerCall& operator=(const HandlerCall&) = delete;

    /// Null for none.
    const MessageHandler* handler() const { return mHandler; }

    /// Gives up a handler; destroys it unless it runs or others hold it.
    static void release(std::shared_ptr<const MessageHandler> handler) noexcept;

 private:
    static constinit thread_local HandlerCall* tInnermost [[gnu::tls_model("initial-exec")]];

    const MessageHandler* const mHandler;
    HandlerCall* const mOuter;
    // Once it was given up. Mutable, since calls are const objects.
    mutable std::shared_ptr<const MessageHandler> mKept;
};

}  // namespace Vaskel

#endif
