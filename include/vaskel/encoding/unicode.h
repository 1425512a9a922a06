// Text in its Unicode forms, all of them carried in byte strings.
//
// The forms
//   UTF-8    no mark; counts as UTF-8 when its first byte is below 0xF0
//   UTF-16   begins with FE FF (big-endian) or FF FE (little-endian)
//   UTF-32   begins with 00 00 FE FF (big-endian) or FF FE 00 00 (little-endian)
//   escaped  plain text of octal escapes that begins with \376\377 or \377\376:
//            UTF-16 bytes as page description sources write them
//   hex      plain text of hex digits that begins with FEFF or FFFE
//
// Results in UTF-16 and UTF-32 begin with the mark U+FEFF in the byte order
// asked for (bigEndian: high byte first) and end with one zero unit inside the
// string: "A" in big-endian UTF-16 is a string of the six bytes FE FF 00 41
// 00 00. Results in UTF-8 have no mark and no terminator inside.
//
// Bad input gives the empty string, which no good UTF-16 or UTF-32 result is;
// in UTF-8 it is also what the empty text gives. Nothing is reported and
// nothing is thrown but std::bad_alloc. A null pointer counts as bad input.
//
// What must be readable. UTF-8, escaped and hex text end at their first zero
// byte; a sequence or an escape cut off there is bad input, and what lies
// behind is not looked at. UTF-16 and UTF-32 text end at their first zero
// unit: two zero bytes at an even distance from the start, or four at a
// multiple of four, must follow the text, whatever else is wrong with it. The
// zero byte that std::string adds is not enough: append a zero unit, as every
// result here has one. Texts may lie at any address. IsUTF16String and
// IsUTF32String look at one byte after the other as long as these agree with a
// mark, at most two and four of them; so do the converters before they read on.
//
// Not the textbook, on purpose. Stored documents hold texts made by these
// rules, so they stay:
//   - Following bytes of UTF-8 sequences give their low six bits whatever
//     their high bits are; overlong forms and surrogates are accepted.
//   - A UTF-16 surrogate pair (hi, lo) is read as
//       ((((hi & 0x3C00) << 8) + 0x10000) | (hi & 0x3F) << 10) | (lo & 0x3FF)
//     which lies in 0x190000 .. 0x19FFFF for every pair.
//   - A value from 0x10000 to 0x1FFFFF is written as the UTF-16 units
//       0xD800 | (((value >> 16 << 6) - 0x40) & 0x3C0) | (value & 0xFC00) >> 10
//       0xDC00 | (value & 0x3F)
//     so that the low unit keeps six bits: U+1F600 becomes D83D DC00.
//   - Values up to 0x1FFFFF count as characters.
// UTF-8 (RFC 3629), UTF-16 (RFC 2781) and UTF-32 (Unicode 15.0, section 3.9)
// agree with these rules for all text whose characters lie below U+10000 and
// are well-formed, and between UTF-8 and UTF-32 for all well-formed text that
// does not begin with a character from U+10000 on.
//
// All functions keep no state and are safe on any thread. Cost: linear.

#ifndef VASKEL_ENCODING_UNICODE_H
#define VASKEL_ENCODING_UNICODE_H

#include <string>

#include "vaskel/export.h"

namespace Vaskel {

// ---- Which form a text has --------------------------------------------------

/// Whether text counts as UTF-8: its first byte is below 0xF0. Nothing else is
/// looked at.
///
///   ""             is UTF-8
///   "\xC3\xA9"     is UTF-8, and so is "\x80"
///   "\xF0\x9F..."  is not, although it is a character of four bytes
///   null           is not
VASKEL_API bool IsUTF8String(const char* text);

/// Whether text begins with a UTF-16 mark, FE FF or FF FE. True for
/// little-endian UTF-32 too, whose mark begins with FF FE. False for null.
///
/// Reads one byte, and a second one only if the first is FE or FF.
VASKEL_API bool IsUTF16String(const char* text);

/// Whether text begins with a UTF-32 mark, 00 00 FE FF or FF FE 00 00. False
/// for null.
///
/// Reads up to four bytes, each only if those before it agree with a mark: of
/// a text that is empty because its first byte is 0, the second is read.
VASKEL_API bool IsUTF32String(const char* text);

/// Whether text has the escaped form: it begins with the eight characters
/// \376\377 or \377\376. False for null.
VASKEL_API bool IsUTFEscapedString(const char* text);

/// Whether text has the hex form: it begins with FEFF or FFFE, in capitals.
/// False for null.
VASKEL_API bool IsUTFHexString(const char* text);

// ---- From whatever form it has ----------------------------------------------
//
// The three tests are made in a fixed order: UTF-8, UTF-16, UTF-32. Both
// UTF-32 marks satisfy an earlier test. Big-endian UTF-32, whose first byte is
// 0, is taken as empty UTF-8 text, and little-endian UTF-32 as UTF-16 text that
// ends behind its mark. Use the UTF-32 converters where a text may be UTF-32.
//
// A text that has the wanted form already is copied as a byte string, up to its
// first zero byte, whatever its units are and unchecked: of UTF-16 text with a
// zero byte in a unit the rest is cut off, and no zero unit ends the result.

/// Text as UTF-8: UTF-8 is copied, UTF-16 is converted, anything else gives "".
///
///   "caf\xC3\xA9"           gives itself
///   FE FF 00 41 00 00       gives "A"
///   "\xF0\x9F\x98\x80"      gives "", null gives ""
VASKEL_API std::string ConvertToUTF8String(const char* text);

/// Text as UTF-16: UTF-8 is converted, UTF-16 is copied with its byte order
/// kept and bigEndian ignored, anything else gives "".
///
///   "A", true                     gives FE FF 00 41 00 00
///   FE FF 4E 2D 00 00, false      gives FE FF 4E 2D
///   FE FF 00 41 00 00, any        gives FE FF
VASKEL_API std::string ConvertToUTF16String(const char* text, bool bigEndian);

/// Text as UTF-32: UTF-8 and UTF-16 are converted, anything else gives "".
///
///   FF FE 41 00 00 00, true       gives 00 00 FE FF 00 00 00 41 00 00 00 00
///   00 00 FE FF ..., true         gives 00 00 FE FF 00 00 00 00
VASKEL_API std::string ConvertToUTF32String(const char* text, bool bigEndian);

// ---- From one form to another -----------------------------------------------

/// UTF-8 to UTF-32.
///
///   "A", true    gives 00 00 FE FF 00 00 00 41 00 00 00 00
///   "A", false   gives FF FE 00 00 41 00 00 00 00 00 00 00
///   "\xC3"       gives "": the sequence is cut off
///   "A\x80"      gives "": no sequence begins with 80
///   "\xC3\x41"   gives U+00C1: 3 from the first byte, 1 from the second
///
/// Lead bytes are 00 .. 7F, C0 .. DF (one byte follows), E0 .. EF (two) and
/// F0 .. F7 (three); any other byte in the place of a lead byte makes the
/// whole result "", as does a first byte of F0 or above.
VASKEL_API std::string ConvertUTF8ToUTF32String(const char* text, bool bigEndian);

/// UTF-8 to UTF-16: what ConvertUTF8ToUTF32String and then
/// ConvertUTF32ToUTF16String make of it.
///
///   "\xC3\xA9", true             gives FE FF 00 E9 00 00
///   "a\xF0\x9F\x98\x80", true    gives FE FF 00 61 D8 3D DC 00 00 00
///   "a\xED\xA0\x80"              gives "": D800 is no character in UTF-16
///   "a\xC0\x80" "b", true        gives FE FF 00 61 00 00: the overlong zero
///                                is a zero unit and ends the text
///   "a\xC0\x80\xFF"              gives "" all the same: bad bytes count
///                                wherever they are, surrogates only in front
///                                of a zero
VASKEL_API std::string ConvertUTF8ToUTF16String(const char* text, bool bigEndian);

/// UTF-16 with a mark to UTF-32.
///
///   FE FF 00 41 00 00, true              gives 00 00 FE FF 00 00 00 41 00 00 00 00
///   FE FF D8 3D DE 00 00 00, true        gives the one value 0x19F600
///   FE FF DC 00 00 00                    gives "": a low unit alone
///   FE FF D8 00 00 41 00 00              gives "": a high unit alone
VASKEL_API std::string ConvertUTF16ToUTF32String(const char* text, bool bigEndian);

/// UTF-16 with a mark to UTF-8.
///
///   FF FE E9 00 00 00                    gives "\xC3\xA9"
///   FE FF D8 3D DE 00 00 00              gives "\xF6\x9F\x98\x80" (0x19F600)
VASKEL_API std::string ConvertUTF16ToUTF8String(const char* text);

/// UTF-32 with a mark to UTF-16.
///
///   00 00 FE FF 00 01 F6 00 00 00 00 00, true   gives FE FF D8 3D DC 00 00 00
///   a value from D800 to DFFF, or of 200000 or above, gives ""
VASKEL_API std::string ConvertUTF32ToUTF16String(const char* text, bool bigEndian);

/// UTF-32 with a mark to UTF-8, one to four bytes a value.
///
///   00 00 FE FF 00 00 D8 00 00 00 00 00   gives "\xED\xA0\x80": unlike in
///                                         UTF-16, surrogates are written
///   a value of 200000 or above gives ""
VASKEL_API std::string ConvertUTF32ToUTF8String(const char* text);

/// The escaped form to UTF-8.
///
/// Each escape is four characters: a backslash (not checked) and three digits
/// d1 d2 d3, which give the byte d1 * 64 + d2 * 8 + d3 modulo 256. Behind a
/// byte 0 one character of the text stands for itself, so that ASCII in
/// big-endian text stays readable. The bytes, marks included, are then UTF-16.
///
///   \376\377\000A                 gives "A"
///   \376\377\000A\000             gives "A": a byte 0 may end the text
///   \377\376\101\000B\000         gives "AB"
///   \376\377\101                  gives U+4100: a zero byte completes the unit
///   \376\377\000A\10              gives "": an escape is cut off
VASKEL_API std::string ConvertUTFEscapedToUTF8String(const char* text);

/// The hex form to UTF-8.
///
/// Two digits a byte, high one first; A to F count 10 to 15, every other
/// character its code minus 48, and the byte is their sum 16 * high + low
/// modulo 256, so that small letters give other characters.
///
///   FEFF0041    gives "A", FFFE4100 gives "A"
///   FEFF41      gives U+4100: a zero byte completes the unit
///   FEFF004     gives "": a digit is missing
///   feff0041    gives "": this is no hex form
VASKEL_API std::string ConvertUTFHexToUTF8String(const char* text);

}  // namespace Vaskel

#endif
