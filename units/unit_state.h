// The unit table and the current units, as the formatters and readers see them.

#ifndef UNITS_UNIT_STATE_H
#define UNITS_UNIT_STATE_H

#include "vaskel/export.h"

namespace Vaskel {

constexpr int kUnitCount = 12;

// One row of the table. The names are arrays, not pointers: the table needs no
// relocation.
struct UnitRow {
    char display[9];
    char distinct[8];
    signed char intDigits;
    signed char precision;
};

// The last row stands for every int that is no unit code.
inline constexpr UnitRow kUnits[kUnitCount + 1] = {
    {"inch", "inch", 2, 4},         //
    {"mm", "mm", 4, 2},             //
    {"cm", "cm", 3, 3},             //
    {"scan pix", "scanpix", 4, 2},  //
    {"", "exp", 4, 2},              //
    {"", "int", 7, 0},              //
    {"mil", "mil", 5, 1},           //
    {"pt", "pica", 4, 2},           //
    {"pt", "pt", 4, 2},             //
    {"pt", "didot", 4, 2},          //
    {"Q", "Q", 4, 1},               //
    {"bai", "bai", 4, 2},           //
    {"", "", 1, 0},                 // any other int
};

// Units per inch; those of codes 3 and 5 change.
extern VASKEL_HIDDEN double gUnitFactors[kUnitCount + 1];

extern VASKEL_HIDDEN int gCurrentUnit;
extern VASKEL_HIDDEN int gTextUnit;

// Where a code stands in the tables: no int indexes past them.
inline int unitRow(int unit) {
    return static_cast<unsigned>(unit) < kUnitCount ? unit : kUnitCount;
}

inline double unitFactor(int unit) { return gUnitFactors[unitRow(unit)]; }

}  // namespace Vaskel

#endif
