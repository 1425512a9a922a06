// Marks what libvaskel.so exports; everything else in it is hidden.

#ifndef VASKEL_EXPORT_H
#define VASKEL_EXPORT_H

#define VASKEL_API __attribute__((visibility("default")))

#endif
