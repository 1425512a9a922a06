// How any code reports to the user: messages and errors through the one
// handler that the host installs, and questions asked once a block of work.
//
// The library shows nothing itself. Without a handler messages are dropped, and
// without an ask handler questions stay unanswered.
//
// Texts are UTF-8, NUL-terminated. Handlers run on the thread that reports,
// before the reporting call returns, and may do anything: report again,
// install or remove handlers (the running one stays alive until it returns),
// or throw; what they throw passes through to the reporting call's caller and
// leaves everything here consistent. So does std::bad_alloc, from all that
// makes or changes an error object or a registry of blocks. Nothing here takes
// a lock: setters, message blocks and questions belong to the host's
// user-interface thread; messages may come from any thread while no handler is
// being installed or removed.

#ifndef VASKEL_MESSAGES_H
#define VASKEL_MESSAGES_H

#include <boost/optional/optional.hpp>
#include <boost/variant.hpp>
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/orlune/error.h"
#include "vaskel/export.h"

namespace Vaskel {

// ---- Kinds of messages and handlers ----------------------------------------

/// How grave a message is, rising. Handlers get the value that the caller gave,
/// any 32-bit value included; only Error and ShowInfoMessage look at it.
enum MessageSeverity : std::int32_t {
    kMessageInfo = 0,
    kMessageNote = 1,
    kMessageWarning = 2,
    kMessageError = 3,
    kMessageFatal = 4,
};

/// How long a message is worth showing; the meaning is the host's. Any 32-bit
/// value passes through.
enum MessageVolatility : std::int32_t {
    kMessageLasting = 0,
    kMessageTransient = 1,  ///< what ShowInfoMessage gives with an error object's text
};

/// Takes a finished text. The pointer is valid during the call only.
using MessageTextHandler = std::function<void(const char*, MessageSeverity, MessageVolatility)>;

/// Takes an error object that carries severity, volatility and text; it may
/// keep the object.
using MessageErrorHandler = std::function<void(const std::shared_ptr<Orlune::Core::Error>&)>;

/// Alternative 0 takes texts, alternative 1 error objects.
using MessageHandler = boost::variant<MessageTextHandler, MessageErrorHandler>;

/// Holds one handler, as setMessageHandler takes and returns it. A plain value:
/// making or destroying one installs nothing.
class VASKEL_API MessageHandlerRetainer {
 public:
    MessageHandlerRetainer(MessageHandler handler);
    MessageHandlerRetainer(const MessageHandlerRetainer& other);
    MessageHandlerRetainer(MessageHandlerRetainer&& other) noexcept;
    MessageHandlerRetainer& operator=(const MessageHandlerRetainer& other);
    MessageHandlerRetainer& operator=(MessageHandlerRetainer&& other) noexcept;
    ~MessageHandlerRetainer();

    /// A copy of the handler.
    MessageHandler GetMessageHandler() const;

 private:
    MessageHandler mHandler;
};

/// Installs a copy of the handler in handler, or removes the installed one when
/// handler is empty. Returns what was installed before, empty for none.
///
///   setMessageHandler(boost::none)   messages are dropped from now on
///   setMessageHandler(MessageHandlerRetainer(MessageErrorHandler(show)))
///                                    show gets every message as an object
///
/// At the start nothing is installed. An empty std::function may be installed:
/// every message then throws std::bad_function_call to its caller.
/// std::bad_alloc leaves the installed handler as it was.
VASKEL_API boost::optional<MessageHandlerRetainer> setMessageHandler(
    const boost::optional<MessageHandlerRetainer>& handler);

/// Installs a text handler; otherwise as setMessageHandler. A handler of error
/// objects goes through setMessageHandler.
VASKEL_API boost::optional<MessageHandlerRetainer> setAdvancedMessageHandler(
    MessageTextHandler handler);

/// Drops all messages while it lives. The end of the object reinstalls the
/// handler that was installed before it was made, or none if none was. Nothing
/// in it throws, except that a copy allocates.
///
/// Objects nest: each restores what it found. mActive does not count, though:
/// the end of an inner object sets it to false while an outer one still keeps
/// messages off. Hosts that read it rely on this. A copy restores the same
/// handler once more.
class VASKEL_API ScopedMessagesDisabler {
 public:
    ScopedMessagesDisabler() noexcept;
    ScopedMessagesDisabler(const ScopedMessagesDisabler& other);
    ScopedMessagesDisabler& operator=(const ScopedMessagesDisabler& other);
    ~ScopedMessagesDisabler();

    /// Whether messages are being kept off; for hosts, the library never reads it.
    static bool mActive;

 private:
    std::shared_ptr<const MessageHandler> mKept;  // null: none was installed
};

// ---- Messages --------------------------------------------------------------

/// Reports a message: formats it as printf does and hands it to the handler.
///
/// The text holds at most 1024 bytes; of a longer one the first 1024 arrive,
/// which an error object, since it wants whole characters, describes by
/// nothing where the cut splits one. A text of exactly 1024 bytes also makes a
/// line on the debugger output, "Message: string too long. Click quit.",
/// handler or not; a longer one does not, because the formatter's count then
/// reads -1. What cannot be formatted at all (a null format, a wide character
/// without a multibyte form) arrives as the empty text.
///
///   message(kMessageWarning, kMessageLasting, "%d pages", 12)
///
/// A handler of error objects gets an Error of the text. Without a handler
/// nothing happens beyond that line. A text handler costs no allocation.
VASKEL_API void message(MessageSeverity severity, MessageVolatility volatility, const char* format,
                        ...) __attribute__((format(printf, 3, 4)));

/// Reports a message by its number. The installed MessageIDConvertor turns id
/// into a format, for which the further arguments are; the text that arrives is
/// the formatted one, cut at 1024 bytes, a blank and the number in brackets,
/// altogether cut at 1024 bytes as above.
///
///   message(kMessageError, kMessageLasting, 17L, "x")   with the format "no %s"
///   arrives as "no x [17]"
///
/// Without a convertor nothing happens; a convertor is asked even when no
/// handler is installed. A number beyond 32 bits shows its low 32 bits. A
/// literal 0 needs its suffix (0L), as it could be a null format as well.
VASKEL_API void message(MessageSeverity severity, MessageVolatility volatility, long id, ...);

/// Turns message numbers into formats; implemented by the host.
class VASKEL_API MessageIDConvertor {
 public:
    /// The printf format of message id. It has to suit the arguments with which
    /// the message is reported.
    virtual std::string ConvertMessageID(long id) = 0;
    virtual ~MessageIDConvertor();
};

/// Sets the convertor; null switches messages by number off, as at the start.
/// The host keeps the object alive while it is set.
VASKEL_API void SetMessageIDConvertor(MessageIDConvertor* convertor);

// ---- Error objects ---------------------------------------------------------

/// A message as an object: what a handler of error objects gets from here.
///
/// The base's severity is the MessageSeverity for 2, 3 and 4, it is 0 for 0 and
/// 1, and 3 for any other value. Clone is the base's and gives an object of the
/// base class, without the text.
class VASKEL_API Error : public Orlune::Core::Error {
 public:
    /// text is UTF-8, up to its first NUL; malformed UTF-8 gives the empty
    /// description.
    Error(MessageSeverity severity, MessageVolatility volatility, const std::string& text);
    Error(MessageSeverity severity, MessageVolatility volatility,
          const Orlune::Core::uni16string& text);
    Error(const Error& other);
    /// std::bad_alloc leaves description and volatility as they were.
    Error& operator=(const Error& other);
    ~Error() override;

    /// The text.
    Orlune::Core::uni16string GetDescription() const override;
    /// The value that the constructor got.
    MessageVolatility GetVolatility() const;

 private:
    Orlune::Core::uni16string mDescription;
    MessageVolatility mVolatility;
};

/// Shows an error object. A handler of error objects gets this very pointer,
/// null included. A text handler gets the object's GetDescription in UTF-8 with
/// volatility 1, whatever the object holds, and the MessageSeverity
///
///   base 0 is 1, base 1 is 0; 2, 3 and 4 stay; any other is 3
///
/// which is not the reverse of what Error does: an Error of MessageSeverity 0
/// arrives with 1. Handlers tell notes by that value. With a text handler a null
/// pointer does nothing. Without a handler nothing happens.
VASKEL_API void ShowInfoMessage(const std::shared_ptr<Orlune::Core::Error>& error);

/// Shows a finished text, up to its first NUL. It is no format and may have any
/// length. A handler of error objects gets an Error of it. Without a handler
/// nothing happens.
VASKEL_API void ShowInfoMessage(MessageSeverity severity, MessageVolatility volatility,
                                const std::string& text);

/// The same with 16-bit text, which arrives as UTF-8. What is no UTF-16 (an
/// unpaired surrogate) arrives as the empty text.
VASKEL_API void ShowInfoMessage(MessageSeverity severity, MessageVolatility volatility,
                                const Orlune::Core::uni16string& text);

// ---- Questions -------------------------------------------------------------

/// Asks the user; implemented by the host.
class VASKEL_API MessageAskHandler {
 public:
    /// Asks and returns the answer, whose meaning is the host's. Which text is
    /// title, question and labels, and what the arguments are for, is the
    /// host's business too: all pointers arrive as the caller gave them, null
    /// included. arguments is valid during the call only.
    virtual int AskMessage(const char* text1, const char* text2, const char* text3, const char* key,
                           va_list arguments) = 0;
    virtual ~MessageAskHandler();
};

/// Sets who asks; null for nobody, as at the start. The host keeps the object
/// alive while it is set.
VASKEL_API void SetMessageAskHandler(MessageAskHandler* handler);

/// Asks at once, without blocks, and returns the answer, or -1 when no ask
/// handler is set. Nothing is kept.
///
///   MessageAsk("overwrite", "Replace %s?", "Yes", "No", name)
///
/// The handler gets text1, text2, text3, key and the further arguments.
VASKEL_API int MessageAsk(const std::string& key, const std::string& text1,
                          const std::string& text2, const char* text3, ...);

/// Questions that are asked once a block of work.
///
/// A block is a number. While it is open, its first question is put to the host
/// and every later one, whatever its key, is not; the answer is kept under the
/// question's key and can be looked up instead. Opening the block again allows
/// one more question. Answers are kept for good, one a key for all blocks.
///
///   MessageBlockDelimiter block(7);
///   for (const File& file : files) {
///       blocks->MessageAsk(7, "overwrite", "Replace?", "Yes", "No");
///       if (blocks->GetMessageAnswer(7, "overwrite") != kYes) continue;
///       ...
///   }
///
/// A null key is the empty key. Cost: logarithmic in the blocks and keys known.
class VASKEL_API MessageBlocks {
 public:
    /// The host's answer, 32 bits; -1 is none.
    enum MessageAnswer : std::int32_t { kNoAnswer = -1 };

    /// The one registry, made on first use and never destroyed.
    static MessageBlocks* Instance();

    /// A copy is a registry of its own with the same blocks and answers.
    MessageBlocks(const MessageBlocks& other);
    /// std::bad_alloc leaves this registry as it was.
    MessageBlocks& operator=(const MessageBlocks& other);
    virtual ~MessageBlocks();

    /// Opens block id with no question asked yet. std::bad_alloc changes nothing.
    void ActivateBlock(int id);
    /// Closes block id, opened before or not. Answers stay.
    void DeActivateBlock(int id);
    /// Whether block id was ever opened or closed.
    bool Exists(int id) const;

    /// Puts a question to the ask handler, with text1, text2, text3, key and the
    /// further arguments, and keeps the answer under key, unless no ask handler
    /// is set, or block id is closed or has asked already. A block that was
    /// never opened asks every time.
    ///
    /// The block counts as having asked before the handler runs: the handler may
    /// ask, open and close blocks itself, and when it throws the block has asked
    /// and no answer is kept. std::bad_alloc comes before the question or not at
    /// all, and changes nothing.
    void MessageAsk(int id, const char* key, const char* text1, const char* text2,
                    const char* text3, ...);

    /// The answer kept under key; -1 when there is none, and while block id is
    /// closed or has not asked since it was opened. A block that was never
    /// opened shows every answer.
    MessageAnswer GetMessageAnswer(int id, const char* key);

 private:
    MessageBlocks();

    static MessageBlocks* cInstance;

    std::map<int, bool> mActive;
    std::map<int, bool> mAsked;
    std::map<std::string, MessageAnswer, std::less<>> mAnswers;
};

/// Opens a block of the one registry for a scope: construction opens it, the
/// end closes it. Copying copies the number only, so that each copy closes the
/// block once more at its own end.
class VASKEL_API MessageBlockDelimiter {
 public:
    explicit MessageBlockDelimiter(int id);
    MessageBlockDelimiter(const MessageBlockDelimiter& other);
    MessageBlockDelimiter& operator=(const MessageBlockDelimiter& other);
    virtual ~MessageBlockDelimiter();

 private:
    int mBlock;
};

}  // namespace Vaskel

#endif
