// Seeded random numbers and the model of a pop-up choice.

#ifndef VASKEL_UTIL_H
#define VASKEL_UTIL_H

#include <cstddef>
#include <cstdint>

#include "vaskel/export.h"
#include "vaskel/signal.h"

namespace Vaskel {

// ---- Random numbers ------------------------------------------------------------

/// A small, fast generator that repeats exactly: an additive lagged generator
/// over a ring of 32 words of 28 bits, filled by a linear congruential one.
///
/// Callers store seeds and expect the same numbers for ever, so constants and
/// scalings never change; it is not meant for statistics or secrets. One draw,
/// of whatever kind, uses up one word. Every int is a seed; seeds that differ by
/// a multiple of 2^28 are the same.
///
///   Random r(42);
///   r.nextInt(100)  is 44, then 56, 68, 34, 48, 87, 85, 90
///
/// Copies go on from the same place independently. An object belongs to one
/// thread at a time; default construction, which counts the generators made,
/// belongs to the user-interface thread. Nothing here fails or allocates.
class VASKEL_API Random {
 public:
    /// Seeded with Orlune::Clock::Ticks plus the number of generators made this
    /// way before, so that those made in one tick differ.
    Random();
    explicit Random(int seed);
    Random(const Random& other);
    Random& operator=(const Random& other);
    Random& operator=(Random&& other) noexcept;

    /// Begins the sequence of seed anew.
    void setSeed(int seed);

    /// An integer in 0 .. n - 1, for n in 1 .. 131080; 0 for n = 0.
    ///
    /// It is h * n / 16384 rounded down for the top 14 bits h of a word, so that
    /// no more than 16384 values come for a larger n. Beyond 131080 the product
    /// wraps in 32 bits; an n in -131072 .. -1 gives n .. 0.
    int nextInt(int n);
    /// A multiple of 0.00001 in 0.0 .. 0.99994, one of 16384.
    double nextDouble();
    /// nextDouble as a float.
    float nextFloat();
    bool nextBool();
    /// All 256 values of a byte.
    char nextByte();
    /// A multiple of 4 in 0 .. 65532.
    unsigned short nextShort();

    // Many draws at once, an addition to the generator's own operations: out
    // receives what count single draws would return one after the other, at half
    // their cost. out has room for count elements and may be null for a count of 0.
    void nextInts(int n, int* out, std::size_t count);
    void nextDoubles(double* out, std::size_t count);
    void nextBytes(char* out, std::size_t count);

 private:
    std::uint32_t nextWord();
    void generateRound();

    // The scalings. Callers store seeds and expect the numbers that come of them,
    // so they stay, the odd ones too: 100001 in toDouble, where 100000 would do,
    // and shorts whose two low bits are always 0.
    // Test: "a seed gives the numbers it always gave".
    static std::uint32_t topBits(std::uint32_t word) { return word >> 14; }
    // The product wraps in 32 bits.
    static int toInt(std::uint32_t word, int n) {
        return static_cast<std::int32_t>(topBits(word) * static_cast<std::uint32_t>(n)) >> 14;
    }
    // Divided, not multiplied by 0.00001: the two differ in the last bit.
    static double toDouble(std::uint32_t word) {
        return static_cast<int>(topBits(word) * 100001 >> 14) / 100000.0;
    }
    static char toByte(std::uint32_t word) {
        return static_cast<char>(static_cast<unsigned char>(word >> 20));
    }

    static int seedOffset;

    // The ring holds a round of 32 words at once; mIndex is that of the last word
    // drawn, -1 before the first. Programs contain the draws below, so neither
    // ever changes.
    std::int32_t mIndex;
    std::uint32_t mRing[32];
};

VASKEL_API inline std::uint32_t Random::nextWord() {
    if (mIndex == 31) [[unlikely]]
        generateRound();  // the next 32 words; mIndex is -1 again
    return mRing[++mIndex];
}

VASKEL_API inline int Random::nextInt(int n) { return toInt(nextWord(), n); }
VASKEL_API inline double Random::nextDouble() { return toDouble(nextWord()); }
VASKEL_API inline float Random::nextFloat() { return static_cast<float>(nextDouble()); }
VASKEL_API inline bool Random::nextBool() { return nextWord() >> 27 != 0; }
VASKEL_API inline char Random::nextByte() { return toByte(nextWord()); }
VASKEL_API inline unsigned short Random::nextShort() {
    return static_cast<unsigned short>(topBits(nextWord()) * 4);
}

/// The process-wide generator, which is seeded like a default-constructed one
/// when the library is loaded: ranini seeds it, ranint and randou draw from it
/// like nextInt and nextDouble. For the user-interface thread.
///
///   ranini(42); ranint(100)  is 44
VASKEL_API void ranini(int seed);
VASKEL_API int ranint(int n);
VASKEL_API double randou();

/// A seed that the host offers as default for noise; 1234567 until the host
/// writes it. The library never reads it.
extern VASKEL_API int noiseed;

// ---- Pop-up choices ------------------------------------------------------------

/// The model behind a pop-up choice: a list of options, each an integer value
/// with a text, and which of them is chosen.
///
/// The tables belong to the caller, usually static, and outlive the model,
/// which never writes, copies or frees them. The list of values ends at the
/// first index above 0 whose value is 0 and whose text is null; without texts
/// (descriptions null) at the first value 0 above index 0. Texts are looked at
/// only where the value is 0, and in GetNumberOfOptions.
///
///   values {5, 7, 0} with two texts and a null: options 5 and 7
///   values {0, 4, 0} with two texts and a null: options 0 and 4
///
/// Indices are not checked, neither the one given to the constructor nor those
/// of GetValueByIndex and GetDescription. For one thread, usually that of the
/// user interface.
class VASKEL_API PopupDataModel {
 public:
    PopupDataModel(int valueIndex, const int* values, const char* const* descriptions);
    /// The same tables and choice, but no listeners.
    PopupDataModel(const PopupDataModel& other);
    /// Takes over tables and choice without a notification; the listeners stay.
    PopupDataModel& operator=(const PopupDataModel& other);

    /// Disconnects all listeners, also those that a notification in progress
    /// has not reached yet.
    virtual ~PopupDataModel();
    /// The chosen value.
    virtual long GetValue() const;
    /// SetSelection with the lowest 32 bits of value.
    virtual void SetValue(long value);

    /// The chosen value.
    int GetSelection() const;
    /// Chooses the first option with this value, or the first option of all
    /// when there is none, and fires mChanged if the index of the choice is
    /// another than before.
    ///
    /// values {5, 7, 9, 0}, index 2:
    ///   SetSelection(9) fires nothing, SetSelection(7) fires
    ///   SetSelection(3) then chooses 5 and fires, again it fires nothing
    ///   values {5, 5, 0}, index 1: SetSelection(5) goes to 0 and fires
    ///
    /// Slots run last, with the choice stored: they may choose again or destroy
    /// the model, and what they throw passes through. Memory that ends before
    /// leaves the choice as it was.
    void SetSelection(int value);

    /// The index of the choice.
    int GetValueIndex() const;
    /// values[index].
    int GetValueByIndex(int index) const;
    /// descriptions[index], or null without descriptions.
    const char* GetDescription(int index) const;
    /// The index of the first option with this value, or -1.
    int GetIndex(int value) const;
    /// How many texts stand before the first null; 0 without descriptions.
    int GetNumberOfOptions() const;

    /// Fired after the choice has moved to another index; hosts connect to it.
    boost::signals2::signal<void()> mChanged;

 private:
    int findIndex(int value) const;

    std::int32_t mValueIndex;
    const int* mValues;
    const char* const* mDescriptions;
};

}  // namespace Vaskel

#endif
