// Orlune: the description of a physical unit.

#ifndef PLATFORM_ORLUNE_UNIT_H
#define PLATFORM_ORLUNE_UNIT_H

#include "platform/export.h"

namespace Orlune {

/// A unit as powers of the seven SI base units times a scale. Passed by
/// value: the layout below is fixed.
class PLATFORM_API Unit {
 public:
    /// The SI base units; 0 is length.
    enum BaseUnit : int {
        kLength = 0,             // metre
        kMass = 1,               // kilogram
        kTime = 2,               // second
        kCurrent = 3,            // ampere
        kTemperature = 4,        // kelvin
        kAmount = 5,             // mole
        kLuminousIntensity = 6,  // candela
    };
    static constexpr int kBaseUnits = 7;

    /// The number one: all powers 0, scale 1.
    Unit();

    /// Sets the power of one base unit; another base unit than those above
    /// changes nothing.
    void SetPower(BaseUnit base, long power);
    /// Sets how many SI units one of this unit is.
    void SetScale(double scale);

    /// The power of a base unit; 0 for another than those above.
    long GetPower(BaseUnit base) const;
    double GetScale() const;

 private:
    long mPowers[kBaseUnits];
    double mScale;
};

}  // namespace Orlune

#endif
