#include "samples/proof/make/proof_page.h"

#include <algorithm>
#include <cmath>

namespace Proof {
namespace {

constexpr double kMargin = 28;
constexpr double kGap = 14;
constexpr double kPanelWidth = 432;
constexpr double kTitleSize = 15, kNoteSize = 7.5, kCaptionSize = 6.5, kNumberSize = 4;
constexpr double kSwatchHeight = 20;
constexpr double kLabelBand = 20;  // below the scan, for its size
constexpr Rgb kLinkColour = {0, 70, 160};

double scanWidth(const ProofContent& c) { return c.scan.width / c.scan.xUnitsPerInch * 72; }
double scanHeight(const ProofContent& c) { return c.scan.height / c.scan.yUnitsPerInch * 72; }
double panelWidth(const ProofContent& c) { return std::max(kPanelWidth, c.pictureWidth); }

double heightFor(const Picture& picture, double width) {
    return width * picture.height / std::max(1, picture.width);
}

// Walks down the panel; the same walk finds the height and draws, on a canvas
// if there is one.
class Panel {
 public:
    Panel(double x, double top, Canvas* canvas, const FontSource* font)
        : mX(x), mTop(top), mY(top), mCanvas(canvas), mFont(font) {}

    double used() const { return mTop - mY; }
    double y() const { return mY; }
    void skip(double height) { mY -= height; }

    void line(double size, const std::string& text) {
        mY -= size * 1.25;
        if (mCanvas) mCanvas->drawText(mX, mY, size, text);
        mY -= size * 0.25;
    }

    // A line that leads somewhere, underlined.
    void linkedLine(double size, const std::string& text, const std::string& url) {
        line(size, text);
        if (!mCanvas || url.empty()) return;
        const double width = mFont->widthOf(text) * size;
        mCanvas->fillArea({mX, mY + size * 0.1, width, size * 0.05}, kLinkColour);
        mCanvas->linkArea({mX, mY, width, size * 1.25}, url);
    }

    Area picture(double dx, double width, const Picture& picture, const std::string& caption) {
        const Area area{mX + dx, mY - heightFor(picture, width), width, heightFor(picture, width)};
        if (mCanvas) {
            mCanvas->drawPicture(area, picture);
            mCanvas->drawText(area.x, area.y - kCaptionSize * 1.4, kCaptionSize, caption);
        }
        return area;
    }

    void swatches(const SwatchRow& row, double width) {
        framed(row.label, width, row.swatches.size(), [&](const Area& area, std::size_t i) {
            mCanvas->fillArea(area, row.swatches[i].colour);
            return row.swatches[i].numbers;
        });
    }

    void noise(const ProofContent& content, double width) {
        framed(content.noiseLabel, width, content.noise.size(),
               [&](const Area& area, std::size_t i) {
                   mCanvas->drawPicture(area, content.noise[i].picture);
                   return content.noise[i].draw;
               });
    }

 private:
    // A row of framed areas under a label; fill gives each one's caption.
    template <class Fill>
    void framed(const std::string& label, double width, std::size_t count, Fill fill) {
        line(kCaptionSize, label);
        const double step = width / static_cast<double>(std::max<std::size_t>(1, count));
        mY -= kSwatchHeight;
        for (std::size_t i = 0; i < count && mCanvas; ++i) {
            const Area area{mX + static_cast<double>(i) * step, mY, step - 3, kSwatchHeight};
            const std::string caption = fill(area, i);
            mCanvas->frameArea(area);
            // Captions longer than their swatch are set smaller.
            const double size =
                std::min(kNumberSize, (step - 3) / std::max(1.0, mFont->widthOf(caption)));
            mCanvas->drawText(area.x, mY - kNumberSize * 1.2, size, caption);
        }
        mY -= kNumberSize * 1.6;
    }

    double mX, mTop, mY;
    Canvas* mCanvas;
    const FontSource* mFont;
};

// Places of the two ink pictures and the detail.
struct PicturePlaces {
    Area averaged, picked, detail;
};

PicturePlaces drawPanel(const ProofContent& content, Panel& panel) {
    panel.line(kTitleSize, content.title);
    for (std::size_t i = 0; i < content.notes.size(); ++i)
        panel.linkedLine(kNoteSize, content.notes[i], i == 0 ? content.link : "");
    panel.skip(6);

    PicturePlaces places;
    const double half = (content.pictureWidth - kGap) / 2;
    places.averaged = panel.picture(0, half, content.averaged, content.pictureCaption);
    places.picked = panel.picture(half + kGap, half, content.picked, content.pickedCaption);
    panel.skip(std::max(places.averaged.height, places.picked.height) + kCaptionSize * 2.6);
    places.detail = panel.picture(0, half, content.detail, content.detailCaption);
    panel.skip(places.detail.height + kCaptionSize * 2.6);

    for (const SwatchRow& row : content.rows) panel.swatches(row, panelWidth(content));
    panel.noise(content, panelWidth(content));
    panel.skip(4);
    panel.line(kNoteSize, content.fontCaption);
    return places;
}

double pageHeight(const ProofContent& content) {
    Panel measure(0, 0, nullptr, nullptr);
    drawPanel(content, measure);
    // Whole points: viewers round a page's size differently.
    return std::ceil(std::max(scanHeight(content) + kLabelBand, measure.used()) + 2 * kMargin);
}

double panelX(const ProofContent& content) { return kMargin + scanWidth(content) + 2 * kGap; }

}  // namespace

std::string ProofContent::allText() const {
    std::string text = title + scanWidth + scanHeight + pictureCaption + pickedCaption +
                       detailCaption + fontCaption + noiseLabel + " \u00d7";
    for (const std::string& note : notes) text += note;
    for (const SwatchRow& row : rows) {
        text += row.label;
        for (const Swatch& swatch : row.swatches) text += swatch.numbers;
    }
    for (const NoiseSwatch& swatch : noise) text += swatch.draw;
    return text;
}

ProofLayout layOut(const ProofContent& content) {
    ProofLayout layout;
    layout.width = std::ceil(panelX(content) + panelWidth(content) + kMargin);
    layout.height = pageHeight(content);
    Panel panel(panelX(content), layout.height - kMargin, nullptr, nullptr);
    const PicturePlaces places = drawPanel(content, panel);
    if (content.averaged.space == Picture::Cmyk)
        layout.inkPictures = {places.averaged, places.picked, places.detail};
    return layout;
}

void drawProof(const ProofContent& content, const FontSource& font, Canvas& canvas) {
    const double height = pageHeight(content);
    const Area scan{kMargin, height - kMargin - scanHeight(content), scanWidth(content),
                    scanHeight(content)};
    canvas.drawOutlines(scan.x, scan.y, content.scan);
    canvas.frameArea(scan);
    const std::string size = content.scanWidth + " \u00d7 " + content.scanHeight;
    canvas.drawText(scan.x + (scan.width - font.widthOf(size) * kNoteSize) / 2,
                    scan.y - kLabelBand + 8, kNoteSize, size);
    Panel panel(panelX(content), height - kMargin, &canvas, &font);
    drawPanel(content, panel);
}

}  // namespace Proof
