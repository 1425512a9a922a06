#include "samples/proof/pdf_text.h"

#include <qpdf/QPDFObjectHandle.hh>

#include "vaskel/encoding.h"

namespace Proof {

std::string pdfText(const std::string& utf8) {
    std::string text = Vaskel::ConvertUTF8ToUTF16String(utf8.c_str(), true);
    if (text.empty() || Vaskel::ConvertUTF16ToUTF8String(text.c_str()) != utf8)
        return QPDFObjectHandle::newUnicodeString(utf8).getStringValue();
    text.resize(text.size() - 2);  // the zero unit at the end
    return text;
}

}  // namespace Proof
