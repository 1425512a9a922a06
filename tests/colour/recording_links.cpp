#include "tests/colour/recording_links.h"

#include <cstdint>
#include <utility>

#include "platform/libiccprofile.h"

namespace {

RecordingLinks* gRecorder = nullptr;

std::string nameOf(void* handle) {
    return std::to_string(reinterpret_cast<std::uintptr_t>(handle));
}

bool matched(std::string call, std::size_t count, std::uint32_t depth, std::uint32_t in,
             const unsigned char* source, std::uint32_t out, unsigned char* target) {
    gRecorder->calls.push_back(call + " depth " + std::to_string(depth) + " " + std::to_string(in) +
                               ">" + std::to_string(out));
    const int n = ++gRecorder->matches;
    if (n == gRecorder->throwAtMatch) throw RecordingLinks::Thrown{};
    if (n == gRecorder->failAtMatch) return false;
    for (std::size_t i = 0; i < 4 * count; ++i)
        target[i] = static_cast<unsigned char>(source[i] + 1);
    return true;
}

}  // namespace

RecordingLinks::RecordingLinks() { gRecorder = this; }
RecordingLinks::~RecordingLinks() { gRecorder = nullptr; }
std::vector<std::string> RecordingLinks::take() { return std::exchange(calls, {}); }

namespace LibICCProfile {

void SetProfileRenderingIntent(void* profile, std::uint32_t intent) {
    gRecorder->calls.push_back("intent " + nameOf(profile) + " " + std::to_string(intent));
}

void* MakeProfileLink(void* from, void* to) {
    gRecorder->calls.push_back("link " + nameOf(from) + ">" + nameOf(to));
    if (gRecorder->refuseLinks) return nullptr;
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(101 + gRecorder->linksMade++));
}

void DisposeProfileLink(void* link) { gRecorder->calls.push_back("dispose " + nameOf(link)); }

void CloseProfile(void* profile) { gRecorder->calls.push_back("close " + nameOf(profile)); }

bool Match1Colour(void* link, std::uint32_t depth, std::uint32_t in, const unsigned char* source,
                  std::uint32_t out, unsigned char* target) {
    if (!link) return false;
    return matched("one " + nameOf(link), 1, depth, in, source, out, target);
}

bool MatchColours(void* link, std::size_t count, std::uint32_t depth, std::uint32_t in,
                  const unsigned char* source, std::uint32_t out, unsigned char* target) {
    if (!link) return false;
    return matched("many " + nameOf(link) + " x" + std::to_string(count), count, depth, in, source,
                   out, target);
}

}  // namespace LibICCProfile
