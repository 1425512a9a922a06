// The unit state as it is after loading, for as long as the object lives.

#ifndef TESTS_UNITS_FRESH_UNITS_H
#define TESTS_UNITS_FRESH_UNITS_H

#include "units/unit_state.h"
#include "vaskel/units.h"

class FreshUnits {
 public:
    FreshUnits() { restore(); }
    ~FreshUnits() { restore(); }
    FreshUnits(const FreshUnits&) = delete;
    FreshUnits& operator=(const FreshUnits&) = delete;

 private:
    static void restore() {
        Vaskel::gOnUnitChanged.disconnect_all_slots();
        Vaskel::numsca(1200);
        Vaskel::gUnitFactors[5] = 1;
        Vaskel::scauni = 3;
        Vaskel::setuni(1);
        Vaskel::settexuni(7);
        Vaskel::gMetricFlag = 1;
    }
};

#endif
