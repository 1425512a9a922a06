// What every PDF of the sample host shares: document information and a way of
// writing that gives the same bytes for the same content.

#ifndef SAMPLES_PROOF_PDF_DOCUMENT_H
#define SAMPLES_PROOF_PDF_DOCUMENT_H

#include <ctime>
#include <optional>
#include <qpdf/QPDF.hh>
#include <string>

#include "samples/proof/output_file.h"

namespace Proof {

/// The date to state in a document: SOURCE_DATE_EPOCH (seconds since 1970 in
/// the environment) where it holds a number, else what is given.
std::optional<std::time_t> documentDate(std::optional<std::time_t> otherwise);

/// What a document says of itself, in UTF-8; what is empty is left out.
struct DocumentInfo {
    std::string title, author = {}, subject = {};
    std::optional<std::time_t> date = {};
};

/// Sets the information, creator and producer. Texts are UTF-16 by pdfText.
void setDocumentInfo(QPDF& pdf, const DocumentInfo& info);

enum class PdfStreams {
    Compress,  // streams without a filter get one
    AsTheyAre
};

/// Writes the document with an identifier made from its content.
void writeDocument(QPDF& pdf, PdfStreams streams, OutputFile& file);

}  // namespace Proof

#endif
