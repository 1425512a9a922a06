#include "samples/proof/make/swatches.h"

#include <cstdint>

#include "embedded/profiles.h"
#include "platform/libiccprofile.h"
#include "platform/orlune.h"
#include "samples/proof/failure.h"
#include "vaskel/colour.h"

namespace Proof {
namespace {

constexpr int kColumns = 8;

struct Inks {
    unsigned char c, m, y, k;
};

// In percent; bytes follow by 255 / 100.
constexpr Inks kInks[kColumns] = {{100, 0, 0, 0}, {0, 100, 0, 0},   {0, 0, 100, 0},
                                  {0, 0, 0, 100}, {100, 100, 0, 0}, {0, 100, 100, 0},
                                  {60, 0, 60, 0}, {40, 30, 30, 10}};
constexpr Rgb kScreenColours[kColumns] = {{255, 0, 0},     {0, 255, 0},   {0, 0, 255},
                                          {255, 255, 0},   {255, 0, 255}, {0, 255, 255},
                                          {128, 128, 128}, {150, 90, 40}};

unsigned char bytes(int percent) {
    return static_cast<unsigned char>(Orlune::iround(percent * 2.55));
}
Inks bytes(const Inks& percent) {
    return {bytes(percent.c), bytes(percent.m), bytes(percent.y), bytes(percent.k)};
}

std::string text(std::initializer_list<std::pair<const char*, int>> parts) {
    std::string out;
    for (const auto& [name, value] : parts)
        out += (out.empty() ? "" : " ") + std::string(name) + std::to_string(value);
    return out;
}
std::string text(const Rgb& c) { return text({{"R", c.r}, {"G", c.g}, {"B", c.b}}); }
std::string text(const Inks& i) { return text({{"C", i.c}, {"M", i.m}, {"Y", i.y}, {"K", i.k}}); }

// One row of the inks through a model of the library.
template <class Model>
SwatchRow inkRow(const char* label, bool percent, Model model) {
    SwatchRow row{label, {}};
    for (const Inks& inks : kInks) {
        const Inks given = percent ? inks : bytes(inks);
        Rgb c;
        model(given, c);
        row.swatches.push_back({c, text(given)});
    }
    return row;
}

std::vector<SwatchRow> modelRows() {
    return {
        inkRow("cmykrgbpix: naive", false,
               [](const Inks& i, Rgb& c) {
                   Vaskel::cmykrgbpix(i.c, i.m, i.y, i.k, &c.r, &c.g, &c.b);
               }),
        inkRow(
            "cmykrgb: printing inks, percent", true,
            [](const Inks& i, Rgb& c) { Vaskel::cmykrgb(i.c, i.m, i.y, i.k, &c.r, &c.g, &c.b); }),
        inkRow("cmykrgbrun: ink colours, a run of pixels", false,
               [](const Inks& i, Rgb& c) {
                   unsigned char pixel[4] = {i.c, i.m, i.y, i.k};
                   Vaskel::cmykrgbrun(pixel, 1);
                   c = {pixel[2], pixel[1], pixel[0]};
               }),
    };
}

// Carries pixels of four bytes through a chain to screen colours.
std::vector<Rgb> through(const Vaskel::colsynlnk& chain, const std::vector<unsigned char>& pixels) {
    std::vector<unsigned char> out(pixels.size());
    if (chain.process(pixels.data(), out.data(), pixels.size() / 4) != 1)
        throw Failure("a colour link failed: " + Embedded::lastProfileError());
    std::vector<Rgb> colours;
    for (std::size_t i = 0; i < out.size(); i += 4)
        colours.push_back({out[i], out[i + 1], out[i + 2]});
    return colours;
}

struct LinkDisposer {
    void* link;
    ~LinkDisposer() { LibICCProfile::DisposeProfileLink(link); }
};

// A chain of one link, given to it.
SwatchRow pressRow(void* press, void* screen) {
    const LinkDisposer made{LibICCProfile::MakeProfileLink(press, screen)};
    Vaskel::colsynlnk chain;
    chain.addlink(made.link, Embedded::colourSpaceOf(press), Embedded::colourSpaceOf(screen));
    if (!chain.isvalid(Embedded::colourSpaceOf(press), Embedded::colourSpaceOf(screen)))
        throw Failure("the profiles make no link: " + Embedded::lastProfileError());
    std::vector<unsigned char> pixels;
    SwatchRow row{"press profile to screen, one link", {}};
    for (const Inks& inks : kInks) {
        const Inks b = bytes(inks);
        pixels.insert(pixels.end(), {b.c, b.m, b.y, b.k});
    }
    const std::vector<Rgb> colours = through(chain, pixels);
    for (std::size_t i = 0; i < colours.size(); ++i)
        row.swatches.push_back({colours[i], text(bytes(kInks[i]))});
    return row;
}

// Screen to press and back: what the press can show of screen colours. The
// chain makes the links and owns what it is given, so it gets profiles of its
// own.
SwatchRow roundTripRow(const Profiles& profiles, unsigned int intent) {
    const std::uint32_t rgb = Embedded::colourSpaceOf(profiles.screen);
    const std::uint32_t cmyk = Embedded::colourSpaceOf(profiles.press);
    Vaskel::colsynlnk chain;
    chain.add(profiles.openScreen(), intent, rgb);
    chain.add(profiles.openPress(), intent, cmyk);
    chain.add(profiles.openScreen(), intent, rgb);
    if (!chain.isvalid(rgb, rgb))
        throw Failure("the profiles make no chain: " + Embedded::lastProfileError());
    std::vector<unsigned char> pixels;
    for (const Rgb& c : kScreenColours)
        for (const int v : {c.r, c.g, c.b, 0}) pixels.push_back(static_cast<unsigned char>(v));
    SwatchRow row{"screen to press and back, a chain of two links", {}};
    for (const Rgb& c : through(chain, pixels)) row.swatches.push_back({c, text(c)});
    return row;
}

SwatchRow screenRow() {
    SwatchRow row{"screen colours as they are", {}};
    for (const Rgb& c : kScreenColours) row.swatches.push_back({c, text(c)});
    return row;
}

std::vector<SwatchRow> rampRows() {
    SwatchRow hsl{"hslrgb: hue ramp", {}}, screen{"hslrgbscr: the same, printed", {}},
        hsb{"hsbToRGB: saturation ramp", {}};
    for (int i = 0; i < kColumns; ++i) {
        const int h = i * 100 / kColumns;
        Rgb c;
        Vaskel::hslrgb(h, 100, 50, &c.r, &c.g, &c.b);
        hsl.swatches.push_back({c, text({{"H", h}, {"S", 100}, {"L", 50}})});
        Vaskel::hslrgbscr(h, 100, 50, &c.r, &c.g, &c.b);
        screen.swatches.push_back({c, text({{"H", h}, {"S", 100}, {"L", 50}})});
        double r = 0, g = 0, b = 0;
        const int saturation = i * 100 / (kColumns - 1);
        Vaskel::hsbToRGB(0.08, saturation / 100.0, 230, r, g, b);
        hsb.swatches.push_back({{Orlune::iround(r), Orlune::iround(g), Orlune::iround(b)},
                                text({{"H", 8}, {"S", saturation}, {"B", 90}})});
    }
    return {hsl, screen, hsb};
}

// How much black is taken out of the chromatic inks, and how much is printed.
std::vector<SwatchRow> blackRows() {
    struct Setting {
        int removal, scale;  // percent
    };
    constexpr Setting kSettings[kColumns] = {{0, 0},     {25, 25},  {50, 50},  {75, 75},
                                             {100, 100}, {50, 100}, {100, 50}, {0, 100}};
    SwatchRow rgb{"rgbcmyk: R96 G64 B48, removal r and black scale s in percent", {}},
        hsl{"hslcmyk: H60 S40 L30, and its hue back by cmykhsl", {}};
    for (const Setting& setting : kSettings) {
        Inks i;
        Rgb c;
        Vaskel::rgbcmyk(96, 64, 48, &i.c, &i.m, &i.y, &i.k, setting.removal / 100.0,
                        setting.scale / 100.0);
        Vaskel::cmykrgbscr(i.c, i.m, i.y, i.k, &c.r, &c.g, &c.b);
        rgb.swatches.push_back(
            {c, text({{"r", setting.removal}, {"s", setting.scale}}) + ": " + text(i)});
        Vaskel::hslcmyk(60, 40, 30, &i.c, &i.m, &i.y, &i.k, setting.removal / 100.0,
                        setting.scale / 100.0);
        Vaskel::cmykrgbscr(i.c, i.m, i.y, i.k, &c.r, &c.g, &c.b);
        int h = -1, s = -1, l = -1;
        Vaskel::cmykhsl(i.c, i.m, i.y, i.k, &h, &s, &l);
        hsl.swatches.push_back({c, text(i) + ": H" + std::to_string(h)});
    }
    return {rgb, hsl};
}

}  // namespace

std::vector<SwatchRow> swatchRows(const Profiles& profiles, int intent) {
    const auto number = static_cast<unsigned int>(intent);
    LibICCProfile::SetProfileRenderingIntent(profiles.press, number);
    LibICCProfile::SetProfileRenderingIntent(profiles.screen, number);
    std::vector<SwatchRow> rows = modelRows();
    rows.push_back(pressRow(profiles.press, profiles.screen));
    rows.push_back(screenRow());
    rows.push_back(roundTripRow(profiles, number));
    for (SwatchRow& row : rampRows()) rows.push_back(std::move(row));
    for (SwatchRow& row : blackRows()) rows.push_back(std::move(row));
    return rows;
}

}  // namespace Proof
