// Chains of ICC links.
//
// From three links on the pixels between links go through two buffers that
// change their roles. They may be exchanged where copying one into the other
// would show the same, because a successful link writes all four bytes of every
// pixel and never reads its target: platform/libiccprofile.h requires both.

#include <cstddef>
#include <limits>
#include <memory>
#include <new>

#include "platform/libiccprofile.h"
#include "vaskel/colour.h"

namespace Vaskel {
namespace {

constexpr unsigned int kOwnIntent = 10;  // from here on a profile keeps its own
constexpr std::uint32_t kDepth = 8;
constexpr std::size_t kPixelBytes = 4;

bool match(void* link, std::size_t count, std::uint32_t inSpace, const unsigned char* in,
           std::uint32_t outSpace, unsigned char* out) {
    return count == 1
               ? LibICCProfile::Match1Colour(link, kDepth, inSpace, in, outSpace, out)
               : LibICCProfile::MatchColours(link, count, kDepth, inSpace, in, outSpace, out);
}

// More than an array of bytes may have; beyond it new would throw, also in the
// form that returns null.
constexpr std::size_t kMostPixels =
    static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / kPixelBytes;

// Zeroed pixels, or null.
std::unique_ptr<unsigned char[]> makePixels(std::size_t count) {
    if (count > kMostPixels) return nullptr;
    return std::unique_ptr<unsigned char[]>(
        new (std::nothrow) unsigned char[count * kPixelBytes]());
}

// Room for more elements behind those of list; for ever more each time, so that
// long chains are not moved at every step.
template <class T>
void makeRoom(std::vector<T>& list, std::size_t more) {
    if (list.capacity() - list.size() < more) list.reserve(2 * list.size() + more);
}

}  // namespace

colsynlnk::colsynlnk() = default;
colsynlnk::colsynlnk(const colsynlnk& other) = default;

colsynlnk& colsynlnk::operator=(const colsynlnk& other) {
    colsynlnk copy(other);
    mProfiles.swap(copy.mProfiles);
    mLinks.swap(copy.mLinks);
    mSpaces.swap(copy.mSpaces);
    copy.clear();  // what the target held is not released
    return *this;
}

colsynlnk::~colsynlnk() { reset(); }

void colsynlnk::add(void* profile, unsigned int intent, unsigned int space) {
    if (!profile) return;
    // Room for all first, so that nothing can fail once a link is made.
    makeRoom(mProfiles, 1);
    makeRoom(mLinks, 1);
    makeRoom(mSpaces, 1);
    if (intent < kOwnIntent) LibICCProfile::SetProfileRenderingIntent(profile, intent);
    if (!mProfiles.empty())
        mLinks.push_back(LibICCProfile::MakeProfileLink(mProfiles.back(), profile));
    mSpaces.push_back(space);
    mProfiles.push_back(profile);
}

void colsynlnk::addlink(void* link, unsigned int inSpace, unsigned int outSpace) {
    if (!link) return;
    makeRoom(mLinks, 1);
    makeRoom(mSpaces, 2);
    if (mLinks.empty()) mSpaces.push_back(inSpace);
    mLinks.push_back(link);
    mSpaces.push_back(outSpace);
}

bool colsynlnk::isvalid(unsigned int inSpace, unsigned int outSpace) const {
    return !mLinks.empty() && mLinks.size() + 1 == mSpaces.size() && mSpaces.front() == inSpace &&
           mSpaces.back() == outSpace;
}

int colsynlnk::process(const unsigned char* in, unsigned char* out, std::size_t count) const {
    const std::size_t n = mLinks.size();
    if (n == 0) return 1;
    // A single pixel, which pickers ask for over and over, needs no memory.
    unsigned char onePixel[2][kPixelBytes] = {};
    std::unique_ptr<unsigned char[]> pixels[2];
    unsigned char* between[2] = {onePixel[0], onePixel[1]};
    for (std::size_t i = 0; i < 2 && i + 1 < n && count != 1; ++i) {
        pixels[i] = makePixels(count);
        if (!pixels[i]) return 0;
        between[i] = pixels[i].get();
    }
    for (std::size_t i = 0; i < n; ++i) {
        unsigned char* const to = i + 1 == n ? out : between[i % 2];
        if (!match(mLinks[i], count, mSpaces[i], in, mSpaces[i + 1], to)) return 0;
        in = to;
    }
    return 1;
}

void colsynlnk::reset() {
    // As many links as lie between profiles; see the header.
    for (std::size_t i = 1; i < mProfiles.size() && i - 1 < mLinks.size(); ++i)
        if (mLinks[i - 1]) LibICCProfile::DisposeProfileLink(mLinks[i - 1]);
    mLinks.clear();
    for (void* const profile : mProfiles)
        if (profile) LibICCProfile::CloseProfile(profile);
    mProfiles.clear();
    mSpaces.clear();
}

void colsynlnk::clear() {
    mProfiles.clear();
    mLinks.clear();
    mSpaces.clear();
}

}  // namespace Vaskel
