#include "samples/proof/page_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <memory>

#include "samples/proof/failure.h"
#include "samples/proof/output_file.h"
#include "samples/proof/overwrite.h"
#include "samples/proof/pdf_document.h"
#include "samples/proof/pdf_writer.h"
#include "samples/proof/svg_writer.h"

namespace Proof {

PageFiles::PageFiles(std::vector<std::string> outputs, const std::string& format,
                     std::string report, bool force)
    : mOutputs(std::move(outputs)), mReport(std::move(report)) {
    for (const std::string& output : mOutputs) mFormats.push_back(formatOf(output, format));
    std::vector<std::string> all = mOutputs;
    if (!mReport.empty()) all.push_back(mReport);
    for (const std::string& output : all) OutputFile::probe(output);
    requirePermission(all, force);
}

PageFiles::Format PageFiles::formatOf(const std::string& output, const std::string& format) {
    std::string name = format;
    if (name.empty()) name = std::filesystem::path(output).extension().string();
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (name == ".svg" || name == "svg") return Format::Svg;
    if (name == ".pdf" || name == "pdf") return Format::Pdf;
    throw Failure(oneLine("what is to be written to " + output +
                          "? its name ends neither in .svg nor in .pdf; --format tells"),
                  kExitUsage);
}

bool PageFiles::toStdout() const {
    return mReport == "-" || std::count(mOutputs.begin(), mOutputs.end(), "-") > 0;
}

void PageFiles::write(const OutlinePage& page, const std::string& input,
                      std::optional<std::time_t> date, const std::string& report) const {
    const std::string title =
        input == "-" ? "standard input" : std::filesystem::path(input).filename().string();
    std::vector<std::unique_ptr<OutputFile>> files;
    for (std::size_t i = 0; i < mOutputs.size(); ++i) {
        files.push_back(std::make_unique<OutputFile>(mOutputs[i]));
        if (mFormats[i] == Format::Svg)
            writeSvg(page, title, *files.back());
        else
            writePdf(page, title, documentDate(date), *files.back());
    }
    if (!mReport.empty() && !report.empty()) {
        files.push_back(std::make_unique<OutputFile>(mReport));
        files.back()->write(report);
    }
    for (const auto& file : files) file->commit();
}

}  // namespace Proof
