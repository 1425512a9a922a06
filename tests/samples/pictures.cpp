#include "tests/samples/pictures.h"

#include <doctest/doctest.h>
#include <png.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include "samples/proof/failure.h"
#include "samples/proof/ink_rows.h"

namespace {

void appendPng(png_structp png, png_bytep bytes, png_size_t count) {
    auto* to = static_cast<Bytes*>(png_get_io_ptr(png));
    to->insert(to->end(), bytes, bytes + count);
}

struct TiffMemory {
    Bytes bytes;
    std::uint64_t offset = 0;
};

tmsize_t tiffRead(thandle_t handle, void* to, tmsize_t count) {
    auto* memory = static_cast<TiffMemory*>(handle);
    const std::size_t at = std::min<std::size_t>(memory->offset, memory->bytes.size());
    const std::size_t got = std::min(static_cast<std::size_t>(count), memory->bytes.size() - at);
    std::memcpy(to, memory->bytes.data() + at, got);
    memory->offset += got;
    return static_cast<tmsize_t>(got);
}
tmsize_t tiffWrite(thandle_t handle, void* from, tmsize_t count) {
    auto* memory = static_cast<TiffMemory*>(handle);
    const std::size_t end = memory->offset + static_cast<std::size_t>(count);
    if (memory->bytes.size() < end) memory->bytes.resize(end);
    std::memcpy(memory->bytes.data() + memory->offset, from, static_cast<std::size_t>(count));
    memory->offset = end;
    return count;
}
toff_t tiffSeek(thandle_t handle, toff_t offset, int whence) {
    auto* memory = static_cast<TiffMemory*>(handle);
    if (whence == SEEK_CUR) offset += memory->offset;
    if (whence == SEEK_END) offset += memory->bytes.size();
    return memory->offset = offset;
}
int tiffClose(thandle_t) { return 0; }
toff_t tiffSize(thandle_t handle) { return static_cast<TiffMemory*>(handle)->bytes.size(); }

}  // namespace

Bytes encodePng(const PngPicture& picture) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, appendPng, nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height), picture.bits, picture.colourType,
                 picture.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (picture.perMetre)
        png_set_pHYs(png, info, picture.perMetre, picture.perMetre, PNG_RESOLUTION_METER);
    std::vector<png_color> palette(picture.palette.size() / 3);
    for (std::size_t i = 0; i < palette.size(); ++i)
        palette[i] = {picture.palette[3 * i], picture.palette[3 * i + 1],
                      picture.palette[3 * i + 2]};
    if (!palette.empty()) png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
    std::vector<png_bytep> rows(static_cast<std::size_t>(picture.height));
    Bytes samples = picture.rows;
    for (std::size_t y = 0; y < rows.size(); ++y)
        rows[y] = samples.data() + y * (samples.size() / rows.size());
    png_set_rows(png, info, rows.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

Bytes encodeTiff(const std::function<void(TIFF*)>& write) {
    TiffMemory memory;
    TIFF* tiff = TIFFClientOpen("made", "w", &memory, tiffRead, tiffWrite, tiffSeek, tiffClose,
                                tiffSize, nullptr, nullptr);
    REQUIRE(tiff != nullptr);
    write(tiff);
    TIFFClose(tiff);
    return memory.bytes;
}

std::string inkText(Proof::ScanReader& scan, int level) {
    Proof::InkRows rows(scan, level, false, nullptr);
    std::string text;
    for (int y = 0; y < rows.height(); ++y) {
        const unsigned char* ink = rows.next();
        for (int x = 0; x < rows.width(); ++x) text += ink[x / 8] & (0x80 >> (x % 8)) ? '#' : '.';
        text += '\n';
    }
    return text;
}

std::string inkText(const Bytes& file, int level) {
    const auto source = Proof::memoryBytes("made", file);
    const auto scan = Proof::openScan(*source, 1, nullptr);
    return inkText(*scan, level);
}

std::string failureOf(const Bytes& file) {
    try {
        inkText(file);
        return "";
    } catch (const Proof::Failure& failure) {
        return failure.what();
    }
}

TempFolder::TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "proof-test-XXXXXX").string();
    REQUIRE(mkdtemp(name.data()) != nullptr);
    mPath = name;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
