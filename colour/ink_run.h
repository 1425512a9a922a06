// Whole runs of CMYK pixels as ink colours.

#ifndef COLOUR_INK_RUN_H
#define COLOUR_INK_RUN_H

#include <span>

namespace Vaskel {

/// The rule itself; every faster form is held to it.
void inkRunPlain(unsigned char* pixels, int count);

/// One table row an ink and amount instead of divisions. Same bits: rows hold
/// the plain form's own factors, inks keep their order, and the row of amount 0
/// is exactly 1.0, so that multiplying by it equals skipping the ink. A pixel
/// equal to the one before is not calculated again.
void inkRunTable(unsigned char* pixels, int count);

#if defined(__x86_64__)
/// Eight pixels at a time in single precision. Same bytes: its error is bounded,
/// and pixels that lie within it of a half go through the table form.
void inkRunAvx2(unsigned char* pixels, int count);

/// How many of count pixels inkRunAvx2 hands to the table form, without changing
/// them; those behind the last group of eight are not counted.
int inkRunAvx2Declines(const unsigned char* pixels, int count);

/// The same with sixteen pixels at a time.
void inkRunAvx512(unsigned char* pixels, int count);
int inkRunAvx512Declines(const unsigned char* pixels, int count);
#endif

struct InkRunForm {
    const char* name;
    void (*run)(unsigned char* pixels, int count);
};

/// The forms that this CPU can run, the best one last.
std::span<const InkRunForm> inkRunForms();

/// Makes cmykrgbrun use form; null for the best one again. For tests and
/// benchmarks.
void forceInkRunForm(const InkRunForm* form);

}  // namespace Vaskel

#endif
