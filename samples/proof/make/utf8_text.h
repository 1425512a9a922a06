// UTF-8 as characters, by the library's own conversion.

#ifndef SAMPLES_PROOF_MAKE_UTF8_TEXT_H
#define SAMPLES_PROOF_MAKE_UTF8_TEXT_H

#include <string>

#include "vaskel/encoding.h"

namespace Proof {

/// The characters of a UTF-8 text; empty where it is malformed.
inline std::u32string utf32(const std::string& text) {
    const std::string units = Vaskel::ConvertUTF8ToUTF32String(text.c_str(), true);
    std::u32string characters;
    // A byte-order mark first, a zero unit last.
    for (std::size_t i = 4; i + 8 <= units.size(); i += 4) {
        char32_t c = 0;
        for (std::size_t k = 0; k < 4; ++k) c = c << 8 | static_cast<unsigned char>(units[i + k]);
        characters.push_back(c);
    }
    return characters;
}

}  // namespace Proof

#endif
