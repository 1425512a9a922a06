// The encoding of outlines beside the encryption of a font's private part, in a plain
// form and in faster ones.

#ifndef FONTS_OUTLINE_FORMS_H
#define FONTS_OUTLINE_FORMS_H

#include <span>

#include "fonts/outline.h"
#include "fonts/private_cipher.h"

namespace Fonts {

/// The end of an outline's charstring, and its box.
struct Encoded {
    unsigned char* end;
    Box box;
};

/// Encodes outline at out, where its longest charstring and kWriteAhead bytes fit in.
/// Writes charstring, another one, at end meanwhile.
using EncodeBeside = Encoded (*)(unsigned char* out, const Outline& outline, PrivateEnd& end,
                                 Plain charstring);

Encoded encodeBesidePlain(unsigned char* out, const Outline& outline, PrivateEnd& end,
                          Plain charstring);
#if defined(__x86_64__)
Encoded encodeBesideSse2(unsigned char* out, const Outline& outline, PrivateEnd& end,
                         Plain charstring);
Encoded encodeBesideAvx512(unsigned char* out, const Outline& outline, PrivateEnd& end,
                           Plain charstring);
#endif

struct OutlineForm {
    const char* name;
    EncodeBeside encodeBeside;
};

/// The forms that this CPU can run, the best one last.
std::span<const OutlineForm> outlineForms();

/// The form that fonts use.
EncodeBeside outlineForm();

/// Makes fonts use form; null for the best one again. For tests and benchmarks.
void forceOutlineForm(const OutlineForm* form);

}  // namespace Fonts

#endif
