// Boost's signals, included without one false alarm of a compiler.
//
// GCC 12 warns at -O1 and -O2 that boost::function uses an uninitialized buffer
// where a slot without state is connected: it copies the whole buffer, of which
// such a slot needs nothing. The warning is silenced for this include only, and
// so also in programs of the host.

#ifndef VASKEL_SIGNAL_H
#define VASKEL_SIGNAL_H

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <boost/signals2/signal.hpp>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#endif
