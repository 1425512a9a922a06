// ASCII85 streams.

#ifndef VASKEL_ENCODING_ASCII85_H
#define VASKEL_ENCODING_ASCII85_H

#include <cstdint>

#include "vaskel/export.h"

namespace Vaskel {

/// Encodes a stream of bytes as ASCII85 (PostScript Language Reference, third
/// edition, section 3.13, ASCII85Encode; ISO 32000-1 section 7.4.3) and ends it
/// with "~>". A derived class says where the characters go.
///
/// A line feed follows each character that brings a line to 100, the line feed
/// itself not counted; never the "~", so that the end marker stays on one line.
/// No start marker is written.
///
///   77 97 110 32, finish    9jqo^~>
///   0 0 0 0, finish         z~>
///   0 0 0, finish           !!!!~>
///   255, finish             rr~>
///
/// One character costs one virtual call. Exceptions of putuns8 pass through;
/// the stream lacks a part then, and the object can be destroyed or assigned
/// to. The destructor writes nothing: a stream without finish lacks its end.
class VASKEL_API ascii85out_base {
 public:
    ascii85out_base();
    /// A copy goes on where the other one stands: with its partial group, its
    /// column and its line length.
    ascii85out_base(const ascii85out_base& other);
    ascii85out_base& operator=(const ascii85out_base& other);
    virtual ~ascii85out_base();

    /// Writes what is left of a group, then the end marker. Ends the stream:
    /// neither encode nor finish is to be called afterwards.
    virtual void finish();

    /// Adds one byte; returns 0. Characters are written with every fourth one.
    virtual int encode(unsigned char c);

 protected:
    /// Writes one character to the destination.
    virtual void putuns8(unsigned char c) = 0;

 private:
    void putuns8ascii(char c);
    [[gnu::visibility("hidden"), gnu::noinline]] int putgroup(std::uint32_t value);
    [[gnu::visibility("hidden"), gnu::noinline]] int putgroupAtEnd(std::uint32_t value);

    std::uint32_t mGroup;  // the first byte most significant
    std::int32_t mColumn;
    std::int32_t mLineLength;
    std::int32_t mFill;
};

}  // namespace Vaskel

#endif
