// Text conversion of the sample host: whatever the bytes are, they are
// converted or refused with a reason; a result has the form asked for, and is
// the same text as the source where both can be read.

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "samples/proof/convert/text_forms.h"

namespace {

using namespace Proof;

constexpr TextForm kForms[] = {TextForm::Utf8, TextForm::Utf16, TextForm::Utf32, TextForm::Escaped,
                               TextForm::Hex};

void require(bool holds) {
    if (!holds) std::abort();
}

std::optional<std::string> tried(const std::string& text, TextForm form, const TextTarget& target,
                                 bool lossy) {
    try {
        return convertText(text, form, target, lossy).bytes;
    } catch (const TextFault& fault) {
        require(fault.what()[0] != 0);
        return std::nullopt;
    }
}

}  // namespace

// The first byte chooses: form + 5 * target form, 64 for little-endian, 128
// for lossy.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned choice = data[0] & 63;
    if (choice >= 25) return 0;
    const TextForm form = kForms[choice % 5];
    const TextTarget target{kForms[choice / 5], (data[0] & 64) == 0};
    const bool lossy = (data[0] & 128) != 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    detectTextForm(text);

    const std::optional<std::string> result = tried(text, form, target, lossy);
    if (!result || lossy) return 0;
    if (target.form != TextForm::Utf8) require(detectTextForm(*result) == target.form);
    // Surrogate pairs are copied from UTF-16, but not read.
    const std::optional<std::string> plain = tried(text, form, {}, false);
    if (!plain) return 0;
    require(tried(*result, target.form, {}, false) == plain);
    require(tried(*result, target.form, target, false) == result);
    return 0;
}
