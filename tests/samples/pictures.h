// Small pictures in memory, written by the format's own library, for the
// tests of readers; and a folder for files.

#ifndef TESTS_SAMPLES_PICTURES_H
#define TESTS_SAMPLES_PICTURES_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "samples/proof/scan_reader.h"

struct tiff;

using Bytes = std::vector<unsigned char>;

inline Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

struct PngPicture {
    int width = 0;
    int height = 0;
    int bits = 8;
    int colourType = 0;  // PNG_COLOR_TYPE_...
    bool interlaced = false;
    std::uint32_t perMetre = 0;  // pixels per metre for pHYs; 0: none
    Bytes palette = {};          // red, green, blue ...
    Bytes rows = {};             // as stored, rows beginning at a byte
};
Bytes encodePng(const PngPicture& picture);

/// A TIFF in memory; write sets the fields and the rows of its pages.
Bytes encodeTiff(const std::function<void(struct tiff*)>& write);

/// All rows of a scan as text, a line each: '#' ink, '.' paper.
std::string inkText(Proof::ScanReader& scan, int level = 128);
std::string inkText(const Bytes& file, int level = 128);

/// What opening and reading a file says that goes wrong, or "".
std::string failureOf(const Bytes& file);

/// A folder of its own that goes with the object.
class TempFolder {
 public:
    TempFolder();
    ~TempFolder();
    std::string operator/(const std::string& leaf) const { return (mPath / leaf).string(); }
    const std::filesystem::path& path() const { return mPath; }

 private:
    std::filesystem::path mPath;
};

void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);

#endif
