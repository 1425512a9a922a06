// Orlune: the base class of error objects and the 16-bit strings they carry.

#ifndef PLATFORM_ORLUNE_ERROR_H
#define PLATFORM_ORLUNE_ERROR_H

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "platform/export.h"

namespace Orlune::Core {

/// Character traits of 16-bit text: one UTF-16 code unit an element. wchar_t
/// has 32 bits on Linux, so that elements hold 0 to 65535 and a character
/// beyond U+FFFF takes two of them, a surrogate pair. Comparison is by unit
/// value.
struct uni16char_traits : std::char_traits<wchar_t> {};

using uni16string = std::basic_string<wchar_t, uni16char_traits>;

/// The base class of errors. It stores severity, title and time stamp; the
/// message text belongs to derived classes. The order of the virtual
/// operations is part of the binary interface.
class PLATFORM_API Error : public std::exception {
 public:
    /// 32 bits, rising with gravity; the library makes 0, 2, 3 and 4. Any value
    /// passes through.
    enum Severity : std::int32_t { kNote = 0, kInfo = 1, kWarning = 2, kError = 3, kFatal = 4 };

    explicit Error(Severity severity);
    Error(const Error& other);
    Error& operator=(const Error& other);

    ~Error() override;
    /// A short constant English text; never null, valid while the object lives.
    const char* what() const noexcept override;
    /// The title of a message box that shows the error; may be empty.
    virtual uni16string GetTitle() const;
    /// The message text; empty in the base class.
    virtual uni16string GetDescription() const;
    /// When the error was made: milliseconds since 1970-01-01 00:00 UTC. Copies
    /// keep it.
    virtual std::int64_t GetTimeStamp() const;
    /// A new object of the base class with this one's severity, title and time
    /// stamp, whatever the class of this one.
    virtual std::shared_ptr<Error> Clone() const;

    Severity GetSeverity() const;

 private:
    Severity mSeverity;
    uni16string mTitle;
    std::int64_t mTimeStamp;
};

}  // namespace Orlune::Core

#endif
