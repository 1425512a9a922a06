#include "platform/orlune/unit.h"

namespace Orlune {

Unit::Unit() : mPowers{}, mScale(1) {}

void Unit::SetPower(BaseUnit base, long power) {
    if (base >= 0 && base < kBaseUnits) mPowers[base] = power;
}

void Unit::SetScale(double scale) { mScale = scale; }

long Unit::GetPower(BaseUnit base) const {
    return base >= 0 && base < kBaseUnits ? mPowers[base] : 0;
}

double Unit::GetScale() const { return mScale; }

}  // namespace Orlune
