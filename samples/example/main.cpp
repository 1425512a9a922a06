// Reads a length as a user types it and shows it in another unit.
//
// By hand, without CMake:
//   g++ -std=c++20 main.cpp $(pkg-config --cflags --libs vaskel vaskel-embedded)

#include <cstdio>

#include "vaskel/units.h"

int main() {
    int distance = 0;
    if (Vaskel::strtodis("12,5mm +1inch", &distance) != 0) return 1;  // beeps on bad input

    char text[32];
    Vaskel::setuni(8);  // points of 1/72 inch
    Vaskel::distostr(&distance, text);
    std::printf("%d distances are%s %s\n", distance, text, Vaskel::numunistr());
    return 0;
}
