// Orlune: a file named by its URL.

#ifndef PLATFORM_ORLUNE_URL_H
#define PLATFORM_ORLUNE_URL_H

#include <string>

#include "platform/export.h"

namespace Orlune {

/// Holds one URL as text, percent-encoded as it was given. Engines assign to
/// objects of their caller and construct none.
class PLATFORM_API FileSpecURL {
 public:
    FileSpecURL();
    FileSpecURL(const FileSpecURL& other);
    FileSpecURL& operator=(const FileSpecURL& other);
    virtual ~FileSpecURL();

    /// Forgets the URL. Engines call it before they assign a new one.
    virtual void Reset();

    /// Stores a copy of url (NUL-terminated, not null).
    FileSpecURL& operator=(const char* url);

    /// The stored URL; empty after construction and after Reset. For hosts;
    /// no engine reads it.
    const std::string& GetURL() const;

 private:
    std::string mURL;
};

}  // namespace Orlune

#endif
