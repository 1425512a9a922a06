#include "raster/replicate.h"

#include <atomic>
#include <cstring>

#include "util/cpu.h"

namespace Vaskel {

std::int64_t replicationSources(double factor, std::int32_t width, std::int64_t count,
                                std::uint32_t* sources) {
    double column = 0;
    std::int64_t written = 0;
    for (std::int32_t i = 0; i < width && written < count; ++i) {
        for (; factor > column && written < count; column += 1)
            sources[written++] = static_cast<std::uint32_t>(i);
        column -= factor;
    }
    return written;
}

bool isDense(const std::uint32_t* sources, std::size_t count) {
    for (std::size_t j = 1; j < count; ++j)
        if (sources[j] - sources[j - 1] > 1) return false;
    return true;
}

namespace {

void runTable(const Replication& replication, const unsigned int* line, unsigned char* out) {
    for (std::size_t j = 0; j < replication.count; ++j)
        std::memcpy(out + 4 * j, line + replication.sources[j], 4);
}

#if defined(__x86_64__)
constexpr const ReplicateForm* kForms[] = {&kReplicateTable, &kReplicateAvx2};
std::size_t usableForms() { return cpuLevel() >= CpuLevel::Avx2 ? 2 : 1; }
#else
constexpr const ReplicateForm* kForms[] = {&kReplicateTable};
std::size_t usableForms() { return 1; }
#endif

std::atomic<const ReplicateForm*> gForced{nullptr};

}  // namespace

const ReplicateForm kReplicateTable = {"table", runTable};

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
