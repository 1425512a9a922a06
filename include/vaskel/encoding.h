// Text and data encodings: Unicode forms of text, ASCII85, integers of any
// size, and URLs from paths.
//
// One header a subject, all of them here:
//
//   vaskel/encoding/unicode.h  which Unicode form a text has, and from each
//                              form to the others
//   vaskel/encoding/bigint.h   unsigned integers of any size
//   vaskel/encoding/ascii85.h  bytes as ASCII85 streams
//   vaskel/encoding/path_to_url.h  URLs from slash-separated paths
//
// Nothing here keeps state between calls or shares any: different objects may
// be used on different threads.

#ifndef VASKEL_ENCODING_H
#define VASKEL_ENCODING_H

#include "vaskel/encoding/ascii85.h"
#include "vaskel/encoding/bigint.h"
#include "vaskel/encoding/path_to_url.h"
#include "vaskel/encoding/unicode.h"
#include "vaskel/export.h"

namespace Vaskel {}  // namespace Vaskel

#endif
