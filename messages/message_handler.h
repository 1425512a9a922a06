// The installed handler, as the engines of this family reach it.

#ifndef MESSAGES_MESSAGE_HANDLER_H
#define MESSAGES_MESSAGE_HANDLER_H

#include <memory>

#include "vaskel/messages.h"

namespace Vaskel {

/// The installed handler, null for none. Whoever calls it holds the pointer
/// meanwhile, so that a handler that replaces itself stays alive.
std::shared_ptr<const MessageHandler> installedHandler();

}  // namespace Vaskel

#endif
