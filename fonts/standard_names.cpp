#include "fonts/standard_names.h"

#include <array>

namespace Fonts {
namespace {

constexpr unsigned char kFirst = 32;
constexpr std::array<std::string_view, 95> kNames = {"space",       "exclam",
                                                     "quotedbl",    "numbersign",
                                                     "dollar",      "percent",
                                                     "ampersand",   "quoteright",
                                                     "parenleft",   "parenright",
                                                     "asterisk",    "plus",
                                                     "comma",       "hyphen",
                                                     "period",      "slash",
                                                     "zero",        "one",
                                                     "two",         "three",
                                                     "four",        "five",
                                                     "six",         "seven",
                                                     "eight",       "nine",
                                                     "colon",       "semicolon",
                                                     "less",        "equal",
                                                     "greater",     "question",
                                                     "at",          "A",
                                                     "B",           "C",
                                                     "D",           "E",
                                                     "F",           "G",
                                                     "H",           "I",
                                                     "J",           "K",
                                                     "L",           "M",
                                                     "N",           "O",
                                                     "P",           "Q",
                                                     "R",           "S",
                                                     "T",           "U",
                                                     "V",           "W",
                                                     "X",           "Y",
                                                     "Z",           "bracketleft",
                                                     "backslash",   "bracketright",
                                                     "asciicircum", "underscore",
                                                     "quoteleft",   "a",
                                                     "b",           "c",
                                                     "d",           "e",
                                                     "f",           "g",
                                                     "h",           "i",
                                                     "j",           "k",
                                                     "l",           "m",
                                                     "n",           "o",
                                                     "p",           "q",
                                                     "r",           "s",
                                                     "t",           "u",
                                                     "v",           "w",
                                                     "x",           "y",
                                                     "z",           "braceleft",
                                                     "bar",         "braceright",
                                                     "asciitilde"};

}  // namespace

std::string_view standardName(unsigned char code) {
    if (code < kFirst || code >= kFirst + kNames.size()) return {};
    return kNames[code - kFirst];
}

}  // namespace Fonts
