// vaskel-proof make: the whole proof as PDF, PostScript and a report.

#include <sys/stat.h>
#include <zlib.h>

#include <cmath>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>

#include "embedded/profiles.h"
#include "platform/libiccprofile.h"
#include "platform/orlune.h"
#include "samples/proof/commands.h"
#include "samples/proof/console.h"
#include "samples/proof/failure.h"
#include "samples/proof/lengths.h"
#include "samples/proof/make/pdf_proof.h"
#include "samples/proof/make/proof_page.h"
#include "samples/proof/make/ps_proof.h"
#include "samples/proof/numbers.h"
#include "samples/proof/pdf_document.h"
#include "samples/proof/trace_job.h"
#include "vaskel/units.h"

namespace Proof {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kCmyk = 0x434D594B, kRgb = 0x52474220;
constexpr int kDetailPixels = 48;  // a side of the enlarged detail
constexpr double kDetailFactor = 4.17;

// The standard fonts that every PDF viewer has (ISO 32000-1, 9.6.2.2).
constexpr const char* kBase14[14] = {
    "Times-Roman", "Times-Bold",     "Times-Italic",      "Times-BoldItalic",
    "Helvetica",   "Helvetica-Bold", "Helvetica-Oblique", "Helvetica-BoldOblique",
    "Courier",     "Courier-Bold",   "Courier-Oblique",   "Courier-BoldOblique",
    "Symbol",      "ZapfDingbats"};

struct MakeOptions {
    TraceOptions trace;
    std::string font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
    std::string image;
    std::string cmykProfile;
    std::string rgbProfile;  // empty: sRGB
    std::string width = "148mm";
    std::string pictureResolution = "150";
    std::string pdf, ps, json;
};

// A file of the sample input: installed beside the program, or in the tree that
// the program was built in, or below the working folder.
std::string sampleFile(const std::string& name) {
    std::error_code none;
    const fs::path program = fs::read_symlink("/proc/self/exe", none).parent_path();
    for (const fs::path& folder : {program / "../share/vaskel/samples",
                                   program / "../../../samples/data", fs::path("samples/data")})
        if (fs::exists(folder / name, none)) return (folder / name).lexically_normal().string();
    return name;
}

std::optional<std::time_t> newest(const std::vector<std::string>& files) {
    std::optional<std::time_t> time;
    struct stat status;
    for (const std::string& file : files)
        if (stat(file.c_str(), &status) == 0 && (!time || status.st_mtime > *time))
            time = status.st_mtime;
    return time;
}

std::string leaf(const std::string& path) { return fs::path(path).filename().string(); }

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Handles of a proof's profiles, closed at the end.
class OpenProfiles {
 public:
    explicit OpenProfiles(const MakeOptions& options) {
        mProfiles.openPress = [path = options.cmykProfile] {
            return Embedded::openProfile(path.c_str());
        };
        mProfiles.openScreen = [path = options.rgbProfile] {
            return path.empty() ? Embedded::makeSrgbProfile() : Embedded::openProfile(path.c_str());
        };
        open(mProfiles.press, mProfiles.openPress, options.cmykProfile, kCmyk, "CMYK");
        open(mProfiles.screen, mProfiles.openScreen, options.rgbProfile, kRgb, "RGB");
    }
    ~OpenProfiles() {
        LibICCProfile::CloseProfile(mProfiles.press);
        LibICCProfile::CloseProfile(mProfiles.screen);
    }
    OpenProfiles(const OpenProfiles&) = delete;
    OpenProfiles& operator=(const OpenProfiles&) = delete;

    const Profiles& get() const { return mProfiles; }

 private:
    static void open(void*& profile, const std::function<void*()>& opener, const std::string& path,
                     std::uint32_t space, const char* spaceName) {
        profile = opener();
        if (!profile) throw fileFailure(path, "not an ICC profile that can be read");
        if (Embedded::colourSpaceOf(profile) != space) {
            LibICCProfile::CloseProfile(profile);
            throw fileFailure(path, std::string("not a profile of ") + spaceName);
        }
    }

    Profiles mProfiles;
};

std::string withUnit(double inches, const std::string& unit) {
    return lengthText(inches) + " " + unit;
}

void addPictures(const MakeOptions& options, ProofContent& content) {
    const Picture picture = readPicture(options.image);
    const double widthInches =
        Vaskel::distodou(readLength("--width", options.width)) / Vaskel::distodou(Pemmit::getppi());
    content.pictureWidth = widthInches * 72;
    const double ppi = readNumber("--picture-ppi", options.pictureResolution);
    const int outWidth = std::clamp(Orlune::iround(widthInches / 2 * ppi), 1, picture.width);
    content.averaged = reduced(picture, outWidth, true);
    content.picked = reduced(picture, outWidth, false);
    const int side = std::min({kDetailPixels * 3 / 2, picture.width, picture.height * 3 / 2});
    content.detail = enlarged(cropped(picture, (picture.width - side) / 2,
                                      (picture.height - side * 2 / 3) / 2, side, side * 2 / 3),
                              kDetailFactor);
    const std::string size =
        std::to_string(picture.width) + " \u00d7 " + std::to_string(picture.height);
    content.pictureCaption = leaf(options.image) + ", " + size + ", reduced by area means";
    content.pickedCaption = "the same, by picking pixels";
    content.detailCaption = "a detail, enlarged " + decimal(kDetailFactor, 2) + " times";
}

ProofContent contentOf(const MakeOptions& options, const TracedScan& traced,
                       const OpenProfiles& profiles, const FontSource* font) {
    ProofContent content;
    content.title = "VaskelLib proof";
    content.scan = traced.page;
    const std::string unit = options.trace.unit;
    content.scanWidth = withUnit(traced.page.width / traced.page.xUnitsPerInch, unit);
    content.scanHeight = withUnit(traced.page.height / traced.page.yUnitsPerInch, unit);
    content.notes = {leaf(options.trace.input) + ": " + grouped(traced.page.outlines.count()) +
                         " outlines of " + grouped(traced.page.outlines.pointCount()) + " points",
                     "press profile: " + Embedded::profileDescription(profiles.get().press)};
    content.rows = swatchRows(profiles.get());
    addPictures(options, content);
    content.fontCaption = "Set in a Type 1 font built from " + leaf(options.font);
    if (font) content.fontCaption += " (" + font->name() + ")";
    return content;
}

nlohmann::json pictureReport(const char* name, const Picture& picture) {
    const std::vector<unsigned char> samples = samplesOf(picture);
    return {
        {"name", name},
        {"width", picture.width},
        {"height", picture.height},
        {"channels", picture.channels()},
        {"bytes", samples.size()},
        {"crc32", crc32(crc32(0, nullptr, 0), samples.data(), static_cast<uInt>(samples.size()))}};
}

nlohmann::json report(const MakeOptions& options, const ProofContent& content,
                      const ProofLayout& layout, const FontSource& source,
                      const Fonts::Type1Font& font, bool embedded) {
    nlohmann::json json;
    json["inputs"] = {{"scan", leaf(options.trace.input)},
                      {"font", leaf(options.font)},
                      {"image", leaf(options.image)},
                      {"imageFormat", content.averaged.format},
                      {"cmykProfile", leaf(options.cmykProfile)}};
    json["page"] = {{"width", layout.width}, {"height", layout.height}, {"unit", "pt"}};
    json["scan"] = {{"width", content.scanWidth},
                    {"height", content.scanHeight},
                    {"outlines", content.scan.outlines.count()},
                    {"points", content.scan.outlines.pointCount()}};
    json["font"] = {{"name", font.getName()},
                    {"embedded", embedded},
                    {"characters", source.chars().size()},
                    {"length1", font.getHeaderLength()},
                    {"length2", font.getCharProcsLength()},
                    {"length3", font.getZeroesLength()}};
    json["pictures"] = {pictureReport("averaged", content.averaged),
                        pictureReport("picked", content.picked),
                        pictureReport("detail", content.detail)};
    json["masks"] = nlohmann::json::array();
    for (const Area& area : layout.inkPictures)
        json["masks"].push_back({area.x, area.y, area.width, area.height});
    for (const SwatchRow& row : content.rows) {
        nlohmann::json swatches = nlohmann::json::array();
        for (const Swatch& s : row.swatches)
            swatches.push_back(
                {{"rgb", {s.colour.r, s.colour.g, s.colour.b}}, {"numbers", s.numbers}});
        json["swatches"].push_back({{"label", row.label}, {"colours", swatches}});
    }
    return json;
}

int runMake(MakeOptions options, Console& console) {
    console.setQuiet(options.trace.quiet);
    if (options.trace.input.empty()) options.trace.input = sampleFile("scan.tif");
    if (options.image.empty()) options.image = sampleFile("picture.jpg");
    if (options.cmykProfile.empty()) options.cmykProfile = sampleFile("FOGRA39L_coated.icc");

    const OpenProfiles profiles(options);
    const TracedScan traced = traceScan(options.trace, console);
    if (traced.cancelledBy != 0) {
        warning("cancelled; nothing was written");
        return kExitSignal + traced.cancelledBy;
    }
    const FontSource named(options.font, "");
    const ProofContent content = contentOf(options, traced, profiles, &named);
    const FontSource source(options.font, content.allText());
    const ProofLayout layout = layOut(content);
    const ProfileBytes press{fileBytes(options.cmykProfile),
                             Embedded::profileDescription(profiles.get().press), 4};
    const std::optional<std::time_t> date = documentDate(
        newest({options.trace.input, options.font, options.image, options.cmykProfile}));

    // One font object holds one assembled form, so each form has its own.
    const auto font = source.build(source.name());
    const bool embed = !font->isBase14Font(kBase14);
    PdfProof pdf(layout.width, layout.height, source, *font, embed, press);
    drawProof(content, source, pdf);

    std::vector<std::unique_ptr<OutputFile>> files;
    files.push_back(std::make_unique<OutputFile>(options.pdf));
    pdf.write(content.title, "made from " + leaf(options.trace.input), date, *files.back());
    if (!options.ps.empty()) {
        const auto explicitFont = source.build(source.name() + "-Explicit");
        const auto hostFont = source.build(source.name() + "-Host");
        PsProof ps(layout.width, layout.height, source, *explicitFont, *hostFont);
        drawProof(content, source, ps);
        files.push_back(std::make_unique<OutputFile>(options.ps));
        ps.write(content.title, date, *files.back());
    }
    if (!options.json.empty()) {
        files.push_back(std::make_unique<OutputFile>(options.json));
        files.back()->write(report(options, content, layout, source, *font, embed).dump(2) + "\n");
    }
    for (const auto& file : files) file->commit();
    if (!options.trace.quiet)
        for (const auto& file : files)
            if (file->path() != "-") std::printf("wrote %s\n", file->path().c_str());
    return kExitDone;
}

}  // namespace

void addMake(CLI::App& app, Command& chosen) {
    const auto options = std::make_shared<MakeOptions>();
    CLI::App* make =
        app.add_subcommand("make", "make a proof of a scan, a font, a picture and colours");
    make->footer(
        "What is not named comes from the sample input.\n"
        "Example: vaskel-proof make --scan page.tif --image photo.jpg -o proof.pdf --ps proof.ps");
    const char* inputs = "Inputs";
    const auto file = [&](const char* name, std::string& to, const char* help) {
        make->add_option(name, to, help)->type_name("FILE")->group(inputs);
    };
    file("--scan", options->trace.input, "scanned page to trace: PNG, TIFF, PBM or PGM");
    file("--font", options->font, "font of the captions: TrueType, OpenType or Type 1");
    file("--image", options->image, "picture: JPEG, PNG or TIFF, RGB or CMYK");
    file("--cmyk-profile", options->cmykProfile, "ICC profile of the press");
    file("--rgb-profile", options->rgbProfile, "ICC profile of the screen; sRGB if not given");
    const char* result = "The result";
    make->add_option("--unit", options->trace.unit, "unit of lengths")
        ->type_name("UNIT")
        ->capture_default_str()
        ->group(result);
    make->add_option("--width", options->width, "width of both pictures, side by side")
        ->type_name("LENGTH")
        ->capture_default_str()
        ->group(result);
    make->add_option("--picture-ppi", options->pictureResolution, "resolution of the pictures")
        ->type_name("PPI")
        ->capture_default_str()
        ->group(result);
    make->add_option("-o,--output", options->pdf, "PDF file to write")
        ->required()
        ->type_name("FILE")
        ->group(result);
    make->add_option("--ps", options->ps, "PostScript file to write")
        ->type_name("FILE")
        ->group(result);
    make->add_option("--json", options->json, "report to write")->type_name("FILE")->group(result);
    make->add_flag("-q,--quiet", options->trace.quiet, "say nothing unless something is wrong")
        ->group(result);
    make->final_callback([options, &chosen] {
        chosen = [options](Console& console) { return runMake(*options, console); };
    });
}

}  // namespace Proof
