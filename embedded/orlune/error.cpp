#include "platform/orlune/error.h"

#include <chrono>

namespace Orlune::Core {

Error::Error(Severity severity)
    : mSeverity(severity),
      mTimeStamp(std::chrono::duration_cast<std::chrono::milliseconds>(
                     std::chrono::system_clock::now().time_since_epoch())
                     .count()) {}
Error::Error(const Error& other) = default;
Error& Error::operator=(const Error& other) {
    uni16string title = other.mTitle;  // all that can fail
    mSeverity = other.mSeverity;
    mTitle.swap(title);
    mTimeStamp = other.mTimeStamp;
    return *this;
}
Error::~Error() = default;

const char* Error::what() const noexcept { return "Orlune::Core::Error"; }
uni16string Error::GetTitle() const { return mTitle; }
uni16string Error::GetDescription() const { return {}; }
std::int64_t Error::GetTimeStamp() const { return mTimeStamp; }
std::shared_ptr<Error> Error::Clone() const { return std::make_shared<Error>(*this); }
Error::Severity Error::GetSeverity() const { return mSeverity; }

}  // namespace Orlune::Core
