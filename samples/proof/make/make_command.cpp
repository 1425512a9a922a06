// vaskel-proof make: the whole proof as PDF, PostScript and a report.

#include <sys/stat.h>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "embedded/profiles.h"
#include "platform/libiccprofile.h"
#include "platform/orlune.h"
#include "samples/proof/commands.h"
#include "samples/proof/console.h"
#include "samples/proof/failure.h"
#include "samples/proof/lengths.h"
#include "samples/proof/make/make_options.h"
#include "samples/proof/make/pdf_proof.h"
#include "samples/proof/make/proof_page.h"
#include "samples/proof/make/ps_proof.h"
#include "samples/proof/make/report.h"
#include "samples/proof/make/source_link.h"
#include "samples/proof/numbers.h"
#include "samples/proof/overwrite.h"
#include "vaskel/encoding.h"
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
    content.title = options.title;
    content.scan = traced.page;
    const std::string unit = options.trace.unit;
    content.scanWidth = withUnit(traced.page.width / traced.page.xUnitsPerInch, unit);
    content.scanHeight = withUnit(traced.page.height / traced.page.yUnitsPerInch, unit);
    content.notes = {leaf(options.trace.input) + ": " + grouped(traced.page.outlines.count()) +
                         " outlines of " + grouped(traced.page.outlines.pointCount()) + " points",
                     "press profile: " + Embedded::profileDescription(profiles.get().press),
                     std::string(options.intent.title) + ": " + options.intent.line()};
    if (options.link != "none" && (!options.link.empty() || options.trace.input != "-"))
        content.link = sourceUrl(options.link.empty() ? options.trace.input : options.link);
    content.rows = swatchRows(profiles.get(), options.intent.model.GetSelection());
    content.noiseLabel = "Random: noise of the seed " + std::to_string(options.seed);
    content.noise = noiseSwatches(options.seed);
    addPictures(options, content);
    content.fontCaption = "Set in a Type 1 font built from " + leaf(options.font);
    if (font) content.fontCaption += " (" + font->name() + ")";
    return content;
}

// Whether the library reads the text as what it is.
bool isPlainUtf8(const std::string& text) {
    const std::string units = Vaskel::ConvertUTF8ToUTF32String(text.c_str(), true);
    return Vaskel::ConvertUTF32ToUTF8String(units.c_str()) == text;
}

// What can be read from the options alone, before any work.
void readOptions(MakeOptions& options) {
    setLengthUnit(options.trace.unit);
    options.unit.model.SetSelection(Vaskel::getuni());
    options.intent.choose(options.intentName);
    for (const auto& [name, text] :
         {std::pair("--title", &options.title), std::pair("--author", &options.author)})
        if (!isPlainUtf8(*text))
            throw Failure(std::string(name) +
                              " takes well-formed UTF-8 that does not begin with a character"
                              " beyond U+FFFF",
                          kExitUsage);
    if (options.trace.input.empty()) options.trace.input = sampleFile("scan.tif");
    if (options.image.empty()) options.image = sampleFile("picture.jpg");
    if (options.cmykProfile.empty()) options.cmykProfile = sampleFile("FOGRA39L_coated.icc");
}

// Throws where an output cannot be written, or may not be replaced.
void checkOutputs(const MakeOptions& options) {
    if (options.pdf.empty()) throw Failure("--output is required", kExitUsage);
    std::vector<std::string> outputs;
    for (const std::string& output : {options.pdf, options.ps, options.json})
        if (!output.empty()) outputs.push_back(output);
    for (const std::string& output : outputs) OutputFile::probe(output);
    requirePermission(outputs, options.force);
}

int runMake(MakeOptions options, Console& console) {
    console.setQuiet(options.trace.quiet);
    readOptions(options);
    if (options.listChoices) {
        std::fputs((options.intent.list() + options.unit.list()).c_str(), stdout);
        return kExitDone;
    }
    checkOutputs(options);

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
    const DocumentInfo info{options.title, options.author, "made from " + leaf(options.trace.input),
                            documentDate(newest({options.trace.input, options.font, options.image,
                                                 options.cmykProfile}))};

    // One font object holds one assembled form, so each form has its own.
    const auto font = source.build(source.name());
    const bool embed = !font->isBase14Font(kBase14);
    PdfProof pdf(layout.width, layout.height, source, *font, embed, press);
    drawProof(content, source, pdf);

    std::vector<std::unique_ptr<OutputFile>> files;
    files.push_back(std::make_unique<OutputFile>(options.pdf));
    pdf.write(info, *files.back());
    if (!options.ps.empty()) {
        const auto explicitFont = source.build(source.name() + "-Explicit");
        const auto hostFont = source.build(source.name() + "-Host");
        PsProof ps(layout.width, layout.height, source, *explicitFont, *hostFont);
        drawProof(content, source, ps);
        files.push_back(std::make_unique<OutputFile>(options.ps));
        ps.write(info, *files.back());
    }
    if (!options.json.empty()) {
        files.push_back(std::make_unique<OutputFile>(options.json));
        files.back()->write(report(options, content, layout, source, *font, embed));
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
    const char* page = "The page";
    const auto text = [&](const char* name, std::string& to, const char* kind, const char* help) {
        make->add_option(name, to, help)->type_name(kind)->capture_default_str()->group(page);
    };
    text("--title", options->title, "TEXT", "heading of the page and title of the document");
    text("--author", options->author, "TEXT", "author of the document");
    text("--link", options->link, "PLACE",
         "path or URL that the page's link leads to; the scan if not given, or none");
    text("--intent", options->intentName, "NAME", "rendering intent of the colour links");
    make->add_option("--seed", options->seed, "seed of the noise swatches")
        ->type_name("N")
        ->capture_default_str()
        ->group(page);
    make->add_option("--unit", options->trace.unit, "unit of lengths")
        ->type_name("UNIT")
        ->capture_default_str()
        ->group(page);
    make->add_option("--width", options->width, "width of both pictures, side by side")
        ->type_name("LENGTH")
        ->capture_default_str()
        ->group(page);
    make->add_option("--picture-ppi", options->pictureResolution, "resolution of the pictures")
        ->type_name("PPI")
        ->capture_default_str()
        ->group(page);
    const char* result = "The result";
    make->add_option("-o,--output", options->pdf, "PDF file to write; required")
        ->type_name("FILE")
        ->group(result);
    make->add_option("--ps", options->ps, "PostScript file to write")
        ->type_name("FILE")
        ->group(result);
    make->add_option("--json", options->json, "report to write")->type_name("FILE")->group(result);
    make->add_flag("--list-choices", options->listChoices,
                   "print the names that --intent and --unit take, those chosen marked")
        ->group(result);
    make->add_flag("-f,--force", options->force, "replace older files without asking")
        ->group(result);
    make->add_flag("-q,--quiet", options->trace.quiet, "say nothing unless something is wrong")
        ->group(result);
    make->final_callback([options, &chosen] {
        chosen = [options](Console& console) { return runMake(*options, console); };
    });
}

}  // namespace Proof
