#include "raster/replicate.h"

#include <atomic>
#include <cstring>
#include <utility>

#include "util/cpu.h"

namespace Vaskel {

[[gnu::cold]] std::vector<std::uint32_t> replicationSources(double factor, std::int32_t width,
                                                            std::int64_t count) {
    std::vector<std::uint32_t> sources(static_cast<std::size_t>(count));
    double column = 0;
    std::size_t written = 0;
    for (std::int32_t i = 0; i < width && written < sources.size(); ++i) {
        for (; factor > column && written < sources.size(); column += 1)
            sources[written++] = static_cast<std::uint32_t>(i);
        column -= factor;
    }
    sources.erase(sources.begin() + static_cast<std::ptrdiff_t>(written), sources.end());
    return sources;
}

[[gnu::cold]] Replication::Replication(std::vector<std::uint32_t> all, std::size_t width)
    : sources(std::move(all)), eights(sources.size() / 8) {
    std::size_t taken = 0;
    for (; taken < eights.size(); ++taken) {
        EightSources& eight = eights[taken];
        const std::uint32_t* const from = &sources[8 * taken];
        eight.first = from[0];
        if (eight.first + std::size_t{8} > width) break;
        for (std::size_t k = 0; k < 8; ++k)
            eight.places[k] = static_cast<unsigned char>(from[k] - eight.first);
        if (from[7] - eight.first > 7) {
            taken = 0;
            break;
        }
    }
    eights.erase(eights.begin() + static_cast<std::ptrdiff_t>(taken), eights.end());
}

void replicateFrom(std::size_t first, const Replication& replication, const unsigned int* line,
                   unsigned char* out) {
    const std::uint32_t* const sources = replication.sources.data();
    for (std::size_t j = first, n = replication.sources.size(); j < n; ++j)
        std::memcpy(out + 4 * j, line + sources[j], 4);
}

namespace {

#if defined(__x86_64__)
constexpr const ReplicateForm* kForms[] = {&kReplicateTable, &kReplicateAvx2};
std::size_t usableForms() { return cpuLevel() >= CpuLevel::Avx2 ? 2 : 1; }
#else
constexpr const ReplicateForm* kForms[] = {&kReplicateTable};
std::size_t usableForms() { return 1; }
#endif

std::atomic<const ReplicateForm*> gForced{nullptr};

}  // namespace

const ReplicateForm kReplicateTable = {
    "table", [](const Replication& replication, const unsigned int* line, std::uintptr_t,
                unsigned char* out) { replicateFrom(0, replication, line, out); }};

std::span<const ReplicateForm* const> replicateForms() {
    return std::span(kForms).first(usableForms());
}

void forceReplicateForm(const ReplicateForm* form) {
    gForced.store(form, std::memory_order_relaxed);
}

const ReplicateForm& chosenReplicateForm() {
    if (const ReplicateForm* form = gForced.load(std::memory_order_relaxed)) return *form;
    static const ReplicateForm* const best = replicateForms().back();
    return *best;
}

}  // namespace Vaskel
