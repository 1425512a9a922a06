#include "platform/orlune/url.h"

namespace Orlune {

FileSpecURL::FileSpecURL() = default;
FileSpecURL::FileSpecURL(const FileSpecURL& other) = default;
FileSpecURL& FileSpecURL::operator=(const FileSpecURL& other) = default;
FileSpecURL::~FileSpecURL() = default;

void FileSpecURL::Reset() { mURL.clear(); }

FileSpecURL& FileSpecURL::operator=(const char* url) {
    mURL = url;
    return *this;
}

const std::string& FileSpecURL::GetURL() const { return mURL; }

}  // namespace Orlune
