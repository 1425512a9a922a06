// Marks what a host's libraries export to the engines and to each other.
//
// The macro is the platform's own: a host builds its three libraries with
// hidden visibility, defines nothing, and everything declared here stays
// visible. libvaskel.so never defines one of these symbols.

#ifndef PLATFORM_EXPORT_H
#define PLATFORM_EXPORT_H

#define PLATFORM_API __attribute__((visibility("default")))

// Marks what a host may leave out. Where it does, the address is null, and the
// engines do without.
#define PLATFORM_OPTIONAL __attribute__((weak))

#endif
