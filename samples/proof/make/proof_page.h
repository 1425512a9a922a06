// What stands on the proof, and where.

#ifndef SAMPLES_PROOF_MAKE_PROOF_PAGE_H
#define SAMPLES_PROOF_MAKE_PROOF_PAGE_H

#include <string>
#include <vector>

#include "samples/proof/make/canvas.h"
#include "samples/proof/make/font_source.h"
#include "samples/proof/make/noise.h"
#include "samples/proof/make/swatches.h"

namespace Proof {

struct ProofContent {
    std::string title;
    std::vector<std::string> notes;  // under the title
    std::string link;                // URL to which the first note leads; empty for none
    OutlinePage scan;
    std::string scanWidth, scanHeight;  // with their unit
    Picture averaged, picked, detail;
    double pictureWidth = 0;  // points, of the two pictures and the gap together
    std::string pictureCaption, pickedCaption, detailCaption;
    std::vector<SwatchRow> rows;
    std::string noiseLabel;
    std::vector<NoiseSwatch> noise;
    std::string fontCaption;

    /// Every text that is drawn, for a font that has all its characters.
    std::string allText() const;
};

struct ProofLayout {
    double width = 0, height = 0;   // of the page, points
    std::vector<Area> inkPictures;  // whose colours a viewer manages
};

/// The page's size and places, which depend on the content alone.
ProofLayout layOut(const ProofContent& content);

/// Draws everything.
void drawProof(const ProofContent& content, const FontSource& font, Canvas& canvas);

}  // namespace Proof

#endif
