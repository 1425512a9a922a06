// Charstring numbers and the encryption of the Type 1 format.
// "Adobe Type 1 Font Format", sections 6.2 and 7.1 to 7.3.

#ifndef FONTS_CHARSTRING_H
#define FONTS_CHARSTRING_H

#include <cstddef>
#include <cstdint>

namespace Fonts {

constexpr int kLongestNumber = 5;  // bytes

/// Writes value as a charstring number and returns the position behind it.
/// Values beyond -31999 .. 31999 are written as the nearer end.
unsigned char* encodeNumber(unsigned char* out, std::int64_t value);

/// The running cipher of charstrings (key 4330) and of eexec (key 55665).
class Encryption {
 public:
    static constexpr std::uint16_t kCharstringKey = 4330;
    static constexpr std::uint16_t kEexecKey = 55665;

    explicit Encryption(std::uint16_t key) : mKey(key) {}

    unsigned char encrypt(unsigned char plain) {
        const auto cipher = static_cast<unsigned char>(plain ^ (mKey >> 8));
        mKey = static_cast<std::uint16_t>((std::uint32_t{cipher} + mKey) * 52845u + 22719u);
        return cipher;
    }

    /// Encrypts count bytes in place.
    void encrypt(unsigned char* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) bytes[i] = encrypt(bytes[i]);
    }

 private:
    std::uint16_t mKey;
};

/// The four bytes that go before the plain text of either encryption.
constexpr std::size_t kLeadBytes = 4;
constexpr unsigned char kCharstringLead[kLeadBytes] = {'s', 'i', 'r', 'k'};
constexpr unsigned char kEexecLead[kLeadBytes] = {0x83, 0x69, 0x7A, 0x6F};

/// Charstring commands.
constexpr unsigned char kRlineto = 5;
constexpr unsigned char kRrcurveto = 8;
constexpr unsigned char kClosepath = 9;
constexpr unsigned char kHsbw = 13;
constexpr unsigned char kEndchar = 14;
constexpr unsigned char kRmoveto = 21;

}  // namespace Fonts

#endif
