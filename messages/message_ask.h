// The installed ask handler, as the engines of this family reach it.

#ifndef MESSAGES_MESSAGE_ASK_H
#define MESSAGES_MESSAGE_ASK_H

namespace Vaskel {

class MessageAskHandler;

/// Who asks the user; null for nobody.
MessageAskHandler* askHandler();

}  // namespace Vaskel

#endif
