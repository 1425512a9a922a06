#include "samples/proof/make/report.h"

#include <zlib.h>

#include <filesystem>
#include <nlohmann/json.hpp>

namespace Proof {
namespace {

std::string leaf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

nlohmann::json pictureReport(const std::string& name, const Picture& picture) {
    const std::vector<unsigned char> samples = samplesOf(picture);
    return {
        {"name", name},
        {"width", picture.width},
        {"height", picture.height},
        {"channels", picture.channels()},
        {"bytes", samples.size()},
        {"crc32", crc32(crc32(0, nullptr, 0), samples.data(), static_cast<uInt>(samples.size()))}};
}

nlohmann::json choiceReport(const Choice& choice) {
    nlohmann::json entries = nlohmann::json::array();
    for (int i = 0; i < choice.model.GetNumberOfOptions(); ++i)
        entries.push_back(
            {{"text", choice.model.GetDescription(i)}, {"value", choice.model.GetValueByIndex(i)}});
    return {{"option", choice.option},
            {"entries", entries},
            {"chosen", choice.chosen()},
            {"value", choice.model.GetValue()}};
}

}  // namespace

std::string report(const MakeOptions& options, const ProofContent& content,
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
    for (const NoiseSwatch& swatch : content.noise)
        json["pictures"].push_back(pictureReport("noise " + swatch.draw, swatch.picture));
    json["noise"] = {{"seed", options.seed}};
    json["information"] = {{"title", options.title}, {"author", options.author}};
    json["link"] = content.link;
    json["choices"] = {choiceReport(options.intent), choiceReport(options.unit)};
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
    // Names of files may be no UTF-8.
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace Proof
