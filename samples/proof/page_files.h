// The files that a command writes: pages as SVG and PDF, and a report.

#ifndef SAMPLES_PROOF_PAGE_FILES_H
#define SAMPLES_PROOF_PAGE_FILES_H

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "samples/proof/outlines.h"

namespace Proof {

class PageFiles {
 public:
    /// outputs are SVG or PDF files by their names' ends, or all of the format
    /// ("svg" or "pdf"); report is a file or empty. "-" is standard output.
    /// Throws Failure where a name does not tell (usage), a file cannot be written,
    /// or may not be replaced: see overwrite.h.
    PageFiles(std::vector<std::string> outputs, const std::string& format, std::string report,
              bool force);

    /// Whether one of them goes to standard output.
    bool toStdout() const;

    /// Writes all of them, the report if there is one. They are complete before the first one takes
    /// its name. The title is the last part of the input's name.
    void write(const OutlinePage& page, const std::string& input, std::optional<std::time_t> date,
               const std::string& report) const;

 private:
    enum class Format { Svg, Pdf };
    static Format formatOf(const std::string& output, const std::string& format);

    std::vector<std::string> mOutputs;
    std::vector<Format> mFormats;
    std::string mReport;
};

}  // namespace Proof

#endif
