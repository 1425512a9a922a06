// Marks what libvaskel.so exports; everything else in it is hidden.

#ifndef VASKEL_EXPORT_H
#define VASKEL_EXPORT_H

#define VASKEL_API __attribute__((visibility("default")))
/// For what an exported class keeps to itself.
#define VASKEL_HIDDEN __attribute__((visibility("hidden")))

#endif
