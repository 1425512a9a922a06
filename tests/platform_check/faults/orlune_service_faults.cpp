// Faults of Orlune: services and objects.

#include <cstdarg>
#include <cstdio>

#include "faults/faults.h"
#include "platform/orlune.h"

namespace Orlune {

void Beep(int tone) {
    static auto* const next = real<void(int)>("_ZN6Orlune4BeepEi");
    next(tone);
    if (fault("beeps-twice")) next(tone);
}

void debugstring(const char* line) {
    static auto* const next = real<void(const char*)>("_ZN6Orlune11debugstringEPKc");
    next(fault("debugstring-stops-at-percent") && std::strchr(line, '%') ? "" : line);
}

void debug(const char* format, ...) {
    char line[600];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    debugstring(fault("debug-shows-the-format") ? format : line);
}

std::uint32_t Clock::Ticks() {
    static auto* const next = real<std::uint32_t()>("_ZN6Orlune5Clock5TicksEv");
    return fault("ticks-are-centiseconds") ? next() / 10 : next();
}

void Progress::set(float percent) {
    static auto* const next = real<void(Progress*, float)>("_ZN6Orlune8Progress3setEf");
    next(this, fault("progress-is-a-fraction") ? percent / 100 : percent);
}

bool Progress::isCanceled() const {
    static auto* const next = real<bool(const Progress*)>("_ZNK6Orlune8Progress10isCanceledEv");
    return fault("cancelling-is-forgotten") ? Orlune::cancel(0, 0) != 0 : next(this);
}

int cancel(int a, int b) {
    static auto* const next = real<int(int, int)>("_ZN6Orlune6cancelEii");
    return fault("cancel-is-turned-round") ? !next(a, b) : next(a, b);
}

std::int64_t Core::Error::GetTimeStamp() const {
    static auto* const next =
        real<std::int64_t(const Error*)>("_ZNK6Orlune4Core5Error12GetTimeStampEv");
    static std::int64_t count = 0;
    return fault("error-time-moves") ? next(this) + ++count : next(this);
}

const char* Core::Error::what() const noexcept {
    static auto* const next = real<const char*(const Error*)>("_ZNK6Orlune4Core5Error4whatEv");
    return fault("error-has-no-what") ? "" : next(this);
}

Core::Error::Severity Core::Error::GetSeverity() const {
    static auto* const next = real<Severity(const Error*)>("_ZNK6Orlune4Core5Error11GetSeverityEv");
    return fault("error-knows-five-severities") && next(this) > kFatal ? kFatal : next(this);
}

long Unit::GetPower(BaseUnit base) const {
    static auto* const next =
        real<long(const Unit*, BaseUnit)>("_ZNK6Orlune4Unit8GetPowerENS0_8BaseUnitE");
    return fault("unit-powers-are-small") ? static_cast<signed char>(next(this, base))
                                          : next(this, base);
}

void Unit::SetPower(BaseUnit base, long power) {
    static auto* const next =
        real<void(Unit*, BaseUnit, long)>("_ZN6Orlune4Unit8SetPowerENS0_8BaseUnitEl");
    next(this, fault("unit-takes-any-base") && base >= kBaseUnits ? kLength : base, power);
}

void FileSpecURL::Reset() {
    static auto* const next = real<void(FileSpecURL*)>("_ZN6Orlune11FileSpecURL5ResetEv");
    if (!fault("url-reset-does-nothing")) next(this);
}

}  // namespace Orlune
