#include "samples/proof/pdf_document.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFWriter.hh>

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

void setDocumentInfo(QPDF& pdf, const std::string& title, std::optional<std::time_t> date) {
    QPDFObjectHandle info = QPDFObjectHandle::newDictionary();
    info.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(title));
    info.replaceKey("/Producer", QPDFObjectHandle::newUnicodeString("VaskelLib " VASKEL_VERSION));
    std::tm parts{};
    if (date && gmtime_r(&*date, &parts)) {
        char text[40];
        std::strftime(text, sizeof text, "D:%Y%m%d%H%M%SZ", &parts);
        info.replaceKey("/CreationDate", QPDFObjectHandle::newString(text));
        info.replaceKey("/ModDate", QPDFObjectHandle::newString(text));
    }
    pdf.getTrailer().replaceKey("/Info", pdf.makeIndirectObject(info));
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
