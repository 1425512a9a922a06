#include "samples/proof/pdf_document.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFWriter.hh>

#include "samples/proof/pdf_text.h"
#include "samples/proof/version.h"

namespace Proof {
namespace {

// Brings what qpdf writes to the file, whose errors pass through qpdf.
class FilePipeline : public Pipeline {
 public:
    explicit FilePipeline(OutputFile& file) : Pipeline("output", nullptr), mFile(file) {}
    void write(unsigned char const* bytes, std::size_t count) override {
        mFile.write({reinterpret_cast<const char*>(bytes), count});
    }
    void finish() override {}

 private:
    OutputFile& mFile;
};

}  // namespace

std::optional<std::time_t> documentDate(std::optional<std::time_t> otherwise) {
    const char* text = std::getenv("SOURCE_DATE_EPOCH");
    if (!text) return otherwise;
    long long seconds = 0;
    const char* end = text + std::strlen(text);
    const auto read = std::from_chars(text, end, seconds);
    // Four digits have to hold the year.
    if (read.ec != std::errc() || read.ptr != end || seconds < 0 || seconds > 253402300799)
        return otherwise;
    return static_cast<std::time_t>(seconds);
}

void setDocumentInfo(QPDF& pdf, const DocumentInfo& info) {
    QPDFObjectHandle dict = QPDFObjectHandle::newDictionary();
    const auto set = [&dict](const char* key, const std::string& text) {
        if (!text.empty()) dict.replaceKey(key, QPDFObjectHandle::newString(pdfText(text)));
    };
    set("/Title", info.title);
    set("/Author", info.author);
    set("/Subject", info.subject);
    set("/Creator", "vaskel-proof");
    set("/Producer", "VaskelLib " VASKEL_VERSION);
    std::tm parts{};
    if (info.date && gmtime_r(&*info.date, &parts)) {
        char text[40];
        std::strftime(text, sizeof text, "D:%Y%m%d%H%M%SZ", &parts);
        dict.replaceKey("/CreationDate", QPDFObjectHandle::newString(text));
        dict.replaceKey("/ModDate", QPDFObjectHandle::newString(text));
    }
    pdf.getTrailer().replaceKey("/Info", pdf.makeIndirectObject(dict));
}

void writeDocument(QPDF& pdf, PdfStreams streams, OutputFile& file) {
    FilePipeline pipeline(file);
    QPDFWriter writer(pdf);
    writer.setOutputPipeline(&pipeline);
    writer.setDeterministicID(true);
    writer.setStreamDataMode(streams == PdfStreams::Compress ? qpdf_s_compress : qpdf_s_preserve);
    writer.write();
}

}  // namespace Proof
