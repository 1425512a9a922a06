#include "samples/proof/make/choices.h"

#include <cstring>

#include "samples/proof/failure.h"

namespace Proof {
namespace {

// A list ends where the value is 0 and there is no text.
constexpr int kIntents[] = {0, 1, 2, 3, 0};
constexpr const char* kIntentNames[] = {"perceptual", "relative", "saturation", "absolute",
                                        nullptr};

// The two units that are no lengths of their own are left out.
constexpr int kUnits[] = {0, 1, 2, 3, 6, 7, 8, 9, 10, 11, 0};
constexpr const char* kUnitNames[] = {"inch", "mm",    "cm", "scanpix", "mil",  "pica",
                                      "pt",   "didot", "Q",  "bai",     nullptr};

}  // namespace

void Choice::choose(const std::string& text) {
    std::string all;
    const int count = model.GetNumberOfOptions();
    for (int i = 0; i < count; ++i) {
        const char* entry = model.GetDescription(i);
        if (text == entry) {
            model.SetSelection(model.GetValueByIndex(i));
            return;
        }
        all += (i == 0 ? "" : i + 1 < count ? ", " : " or ") + std::string(entry);
    }
    throw Failure(std::string(option) + " takes " + all + ", not \"" + oneLine(text) + "\"",
                  kExitUsage);
}

std::string Choice::chosen() const { return model.GetDescription(model.GetValueIndex()); }

std::string Choice::line() const {
    std::string text;
    for (int i = 0; i < model.GetNumberOfOptions(); ++i) {
        const std::string entry = model.GetDescription(i);
        text += (i == 0 ? "" : "  ") + (i == model.GetValueIndex() ? "[" + entry + "]" : entry);
    }
    return text;
}

std::string Choice::list() const {
    std::string text = std::string(title) + " (" + option + ")\n";
    for (int i = 0; i < model.GetNumberOfOptions(); ++i)
        text += std::string(i == model.GetValueIndex() ? "  * " : "    ") +
                model.GetDescription(i) + "\n";
    return text;
}

Choice intentChoice() {
    return {"--intent", "rendering intent", Vaskel::PopupDataModel(1, kIntents, kIntentNames)};
}

Choice unitChoice() {
    return {"--unit", "unit of lengths", Vaskel::PopupDataModel(1, kUnits, kUnitNames)};
}

}  // namespace Proof
