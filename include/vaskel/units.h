// Measurement units, and distances and numbers to and from the text of dialog
// fields.
//
// A distance is a signed 32-bit integer counting 1/ppi inch, where ppi is the
// document resolution that Pemmit::getppi returns at each call; nothing here
// keeps it. 0x80000000, the lowest 32-bit integer, stands for "no value", and
// so does +infinity where a distance or a number is a double.
//
// A unit is a code from 0 to 11:
//
//   code  display name  distinct name  units per inch       integer  decimals
//                                                            digits
//    0    inch          inch           1                       2       4
//    1    mm            mm             25.4                    4       2
//    2    cm            cm             2.54                    3       3
//    3    scan pix      scanpix        1200, see numsca        4       2
//    4    (empty)       exp            4000                    4       2
//    5    (empty)       int            1, see numbersinit      7       0
//    6    mil           mil            1000                    5       1
//    7    pt            pica           72.28915662650601       4       2
//    8    pt            pt             72                      4       2
//    9    pt            didot          9.5504                  4       2
//   10    Q             Q              101.6                   4       1
//   11    bai           bai            12700 / 1119            4       2
//
// Display names are shown beside numbers and may be ambiguous; distinct names
// are for settings files and scripts. Every other int may be set as a unit too
// and has empty names, factor 1, 1 integer digit and 0 decimals.
//
// With f the units per inch, a distance d is d * f / ppi units, v units are
// ppi * v / f distances, and v of unit a are v * f(b) / f(a) of unit b: in
// doubles, multiplied first and then divided.
//
// The state (current units, factors, flag) is process-wide and unlocked: all
// functions here belong to the thread that changes units, usually that of the
// user interface. parseRange and strtodou, strtoint and strtointmsg, doutostr
// keep no state and are safe on any thread.

#ifndef VASKEL_UNITS_H
#define VASKEL_UNITS_H

#include <string>

#include "platform/orlune/unit.h"
#include "vaskel/export.h"
#include "vaskel/signal.h"

namespace Vaskel {

// ---- Unit state --------------------------------------------------------------

/// The unit of ordinary lengths; 1 (mm) until set.
VASKEL_API int getuni();

/// Makes unit the unit of ordinary lengths and announces it, as updateUnit
/// does, also when it was the unit before. Any int is stored as it is.
///
///   from the start:  setuni(0) fires 2, setuni(8) fires 1, setuni(2) fires 2
VASKEL_API void setuni(int unit);

/// Refreshes what numunistr returns from the current unit and fires
/// gOnUnitChanged: with 1 when metric() equals gMetricFlag, otherwise with 2
/// after 0 or 1, whether the unit is metric, was stored in gMetricFlag.
///
/// All state is stored before the first slot runs; what a slot throws passes
/// through.
VASKEL_API void updateUnit();

/// The unit of text sizes; 7 (pica point) until set.
VASKEL_API int gettexuni();

/// Makes unit the unit of text sizes and fires gOnUnitChanged(3), also when it
/// was that before. Any int is stored as it is.
VASKEL_API void settexuni(int unit);

/// The display name of the current unit, "mm" at first. The text belongs to
/// the library, stays where it is and changes with the unit.
VASKEL_API const char* numunistr();

/// The display name of the text unit, "pt" at first; as numunistr.
VASKEL_API const char* gettexunistr();

/// The decimals of the current unit.
VASKEL_API int getUnitPrecision();

/// The decimals of the text unit.
VASKEL_API int getTextUnitPrecision();

/// The distinct name of the current unit: a constant text.
VASKEL_API const char* GetDistinctUnitString();

/// The distinct name of the text unit: a constant text.
VASKEL_API const char* GetDistinctTextUnitString();

/// Makes the unit with this distinct name the current one, as setuni does, and
/// returns true; false for any other name, with nothing changed or fired. The
/// 26 ASCII letters match in either case. A zero byte ends the name.
///
///   "PICA" sets 7, and numunistr() is "pt"
///   "scan pix" and "" are no distinct names
VASKEL_API bool SetDistinctUnitString(const std::string& name);

/// The same for the text unit, as settexuni does.
VASKEL_API bool SetDistinctTextUnitString(const std::string& name);

/// 1 when the current unit is metric (1 and 2), else 0; the other way round
/// while gMetricFlag is negative.
VASKEL_API int metric();

/// Sets the units per inch of code 3, the resolution of the current scan.
/// Fires nothing. Nothing is checked: a factor of 0 makes values 0 and
/// distances infinite, which round to the ends of the int range.
VASKEL_API void numsca(double unitsPerInch);

/// Sets the units per inch of code 5 to ppi, so that it shows distances as
/// they are stored. Hosts call it when the resolution is known and whenever it
/// changes. Fires nothing.
VASKEL_API void numbersinit();

/// The distance as a physical unit: length to the power 1 with a scale of
/// 0.0254 / ppi metres.
VASKEL_API Orlune::Unit GetDravixDistanceUnit();

/// Fired on the thread that changed a unit, after the new state is stored:
///
///   1  the current unit was set, the metric state is as announced before
///   2  the current unit was set and the metric state changed with it
///   3  the text unit was set
///
/// Slots may set units themselves and may throw; the exception reaches the
/// caller of the function that fired.
extern VASKEL_API boost::signals2::signal<void(int)> gOnUnitChanged;

/// The unit of scanned-image coordinates, for vectostr and strtovec; 3 (scan
/// pix) until the host writes another.
extern VASKEL_API int scauni;

/// The metric state last announced, 1 at first. A host may write it; a
/// negative value inverts metric() until the next updateUnit, which then fires
/// 2 and stores 0 or 1.
extern VASKEL_API int gMetricFlag;

// ---- Numbers and distances to text --------------------------------------------
//
// Output buffers are the caller's. Every function here writes a terminated
// text and no byte behind its terminator. 32 bytes hold every text of the
// functions that take their widths from the unit; doutostr states its own.

/// Writes value in fixed point: sign, digits, ".", decimals.
///
/// value is multiplied by 10^decimals and rounded with Orlune::iround to an
/// integer, of which all digits come. intDigits of 1 or more is a width: each
/// place without a digit becomes two blanks, and a value that needs more
/// places has "*" for its first digits. A negative intDigits writes as many
/// digits as there are and no blanks. The sign stands before the first digit
/// and is that of the rounded value: "-", or "+" (plusSign) or a blank for
/// values that are not negative. Zeros at the end of the decimals are dropped,
/// the point never. +infinity gives the empty text.
///
///   doutostr(12.5, out, 4, 2, true)       is "    +12.5"
///   doutostr(12, out, 4, 2, true)         is "    +12."
///   doutostr(-3.14159, out, 2, 4, true)   is "  -3.1416"
///   doutostr(0.5, out, 2, 2, false)       is "   0.5"
///   doutostr(12345.678, out, 4, 2, true)  is "+*345.68"
///   doutostr(123.456, out, -1, 2, false)  is " 123.46"
///   doutostr(-0.004, out, 4, 2, true)     is "      +0."
///
/// Negative decimals count as 0, more than 9 as 9; an intDigits of 0 counts as
/// 1, and one above 19 - decimals (decimals as counted) as that. The integer
/// saturates at the ends of the 32-bit range, not-a-number is 0.
///
/// Longest text with its terminator: 2 * intDigits + decimals + 2 bytes for an
/// intDigits of 1 or more (both as counted), 13 bytes for a negative one. 40
/// bytes hold every text whatever the arguments.
VASKEL_API void doutostr(double value, char* out, int intDigits, int decimals, bool plusSign);

/// Writes the distance *dist in the current unit, with the unit's integer
/// digits and decimals and a plus sign, as doutostr does, without a unit name;
/// the empty text for "no value".
///
///   in mm at 2400 ppi:    0 is "      +0.", 1181 is "    +12.5"
///   in inch at 2400 ppi:  2400 is "  +1.", -3600 is "  -1.5"
///
/// Longest text with its terminator: 16 bytes.
VASKEL_API void distostr(const int* dist, char* out);

/// distostr with one decimal more. Longest text with its terminator: 17 bytes.
VASKEL_API void distostr2(const int* dist, char* out);

/// distostr with two decimals more, from a double; the empty text for
/// +infinity. Longest text with its terminator: 18 bytes.
VASKEL_API void distostrdou(const double* dist, char* out);

/// distostr in the text unit.
VASKEL_API void textostr(const int* dist, char* out);

/// distostr in the unit scauni, except that "no value" is a number like any
/// other: it is a coordinate of the scan, where nothing is missing.
VASKEL_API void vectostr(const int* dist, char* out);

/// Writes the area *sqdist, in squared distances, in square units of the
/// current unit. Twice the unit's integer digits, 9 at most, and the rest of 9
/// as decimals; a blank instead of the plus sign; the empty text for
/// +infinity.
///
///   in mm, 8 integer digits and 1 decimal, at 2400 ppi:
///     5760000, a square inch, is "           645.2"
///
/// Longest text with its terminator: 20 bytes.
VASKEL_API void sqdistostr(const double* sqdist, char* out);

/// The distance dist in the current unit: dist * f / ppi.
VASKEL_API double distodou(int dist);
VASKEL_API double distodou(double dist);

/// value in the current unit as a distance, not rounded: ppi * value / f.
VASKEL_API double doutodis(double value);

// ---- Text to numbers and distances --------------------------------------------
//
// A field is an expression: operands joined by "*", "+", "-" and "/", taken
// strictly from left to right without precedence or parentheses. Only the
// blank (code 32) is white space. An operand is any run of "+" and "-" (each
// "-" flips the sign), then digits with at most one decimal sign, "." or ",".
// Without digits it is 0. A second decimal sign ends it; dividing by 0, a
// missing operand behind an operator and any other character fail.
//
//   "2+3*4" is 20     "10--2" is 12     "1,5" is 1.5     "6/0", "1.5.3" fail
//
// Digits accumulate in a double, first to last, and are divided by the power
// of ten once at the end. Digit runs beyond the range of a double become
// infinity: as the first operand it is allowed, and rounding saturates it; as
// a later one +infinity fails and -infinity does not; with that many decimals
// they are not-a-number, which rounds to 0.
//
// Results are 0 for success and -1 for failure, which leaves the output alone;
// a null text fails. Cost is linear in the text and nothing is allocated.

/// Reads an expression of plain numbers. An empty field, or one of blanks, is
/// +infinity.
VASKEL_API int strtodou(const char* s, double* out);

/// Reads an expression whose operands, all of them, may carry a unit; the
/// result is in the current unit, and so is an operand without one. An empty
/// field is +infinity.
///
/// The unit word is everything behind the digits up to the next blank, digit
/// or end, operator characters included, and at most 8 bytes long. With
/// blankBeforeUnit, blanks may stand before it. It is compared with the
/// distinct names, or (distinctNames false) with the display names of all
/// codes but 7 and 9: first for equality, letter case included, then whether a
/// name begins with it, the lowest code first. Where it is no unit it is read
/// as the operator and what follows.
///
///   in mm:  "1inch", "1in", "1i" are 25.4; "10mm +5" is 15; "10mm+5" fails
///           "1 inch" needs blankBeforeUnit; "1pt" is 25.4 / 72
///           "1pica" and "1p" of a 72.28915662650601th need distinctNames
VASKEL_API int strtodouuni(const char* s, double* out, bool blankBeforeUnit, bool distinctNames);

/// Reads a distance: strtodouuni(s, ..., false, false) as ppi * value / f,
/// rounded with Orlune::iround. An empty field is "no value". Failure sounds
/// Orlune::Beep(500).
///
///   in mm at 2400 ppi:  "12,5" is 1181, "1inch" is 2400
VASKEL_API int strtodisnil(const char* s, int* out);

/// strtodisnil with 0 for an empty field.
VASKEL_API int strtodis(const char* s, int* out);

/// strtodisnil without rounding; an empty field fails with a beep.
VASKEL_API int strtodisdou(const char* s, double* out);

/// Reads a text size as a distance; failure beeps.
///
/// While the text unit differs from the current one, operands without a unit
/// are in the text unit, unit words are distinct names, and an empty field is
/// "no value". While they are the same it is strtodis: display names, and 0
/// for an empty field. The current unit is as before whenever a host function
/// is called, and afterwards.
VASKEL_API int strtotex(const char* s, int* out);

/// Reads a number without units as a coordinate in the unit scauni: a distance,
/// rounded with Orlune::iround. An empty field fails; failure beeps.
VASKEL_API int strtovec(const char* s, int* out);

/// Reads a number without units, rounded with Orlune::iround. An empty field
/// fails; failure beeps.
///
///   "7/2" is 4, "-7/2" is -4
VASKEL_API int strtoint(const char* s, int* out);

/// strtoint that beeps only when beep is not 0.
VASKEL_API int strtointmsg(const char* s, int* out, int beep);

/// Reads a range of percentages, "lo:hi", each clamped to 0 .. 100. Returns 0,
/// or 1 for failure, always silently.
///
/// Blanks, tabs, line feeds, form feeds and carriage returns may stand around
/// both numbers. A number is digits and ".", without a sign; an empty one is 0,
/// and a second "." changes nothing. The order of the two is not checked.
///
///   "10:90" is 10 and 90, "20:150" is 20 and 100, " 5.5 : " is 5.5 and 0
///   "5", "a:5" and "-5:10" fail
///
/// A null or empty text leaves both outputs alone. Any other failure leaves 0
/// in *hi and in *lo what was read of the lower number, not clamped.
VASKEL_API int parseRange(const char* s, double* lo, double* hi);

}  // namespace Vaskel

#endif
