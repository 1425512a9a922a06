// Writes seeded fonts and what was drawn into them into a folder, for judges
// that are programs of their own: NAME.t1 (embedding form), NAME.explicit.ps,
// NAME.host.ps, NAME.drawn (text).

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/fonts/drawn_glyphs.h"

namespace {

using Fonts::Type1Font;

void write(const std::filesystem::path& file, const std::vector<unsigned char>& bytes) {
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    out.exceptions(std::ios::failbit | std::ios::badbit);
    out.close();
}

void writeFont(const std::filesystem::path& folder, const std::string& name, std::uint32_t seed,
               int spread) {
    const std::vector<DrawnGlyph> glyphs = drawnGlyphs(seed, spread);
    // A font object holds one form at a time.
    Type1Font embedded{std::string(name)};
    draw(glyphs, embedded);
    write(folder / (name + ".t1"), embedded.getData());
    std::ofstream text(folder / (name + ".drawn"));
    text << "sections " << embedded.getHeaderLength() << ' ' << embedded.getCharProcsLength() << ' '
         << embedded.getZeroesLength() << '\n';
    for (const DrawnGlyph& glyph : glyphs) {
        text << "glyph " << static_cast<int>(glyph.code) << ' ' << glyph.name << ' ' << glyph.width
             << '\n';
        for (const auto& [command, at] : glyph.commands) {
            text << command;
            const int numbers = command == 'Z' ? 0 : command == 'C' ? 6 : 2;
            for (int i = 0; i < numbers; ++i) text << ' ' << at[static_cast<std::size_t>(i)];
            text << '\n';
        }
    }
    Type1Font spelled(name + "Explicit");
    draw(glyphs, spelled);
    write(folder / (name + ".explicit.ps"), spelled.getPSData(true));
    Type1Font hosted(name + "Host");
    draw(glyphs, hosted);
    write(folder / (name + ".host.ps"), hosted.getPSData(false));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    writeFont(argv[1], "Small", 1, 600);
    writeFont(argv[1], "Wide", 2, 12000);
    writeFont(argv[1], "Medium", 3, 2500);
    return 0;
}
