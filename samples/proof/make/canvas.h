// What the proof's two forms, PDF and PostScript, can draw. Coordinates are
// points from the page's lower left corner.

#ifndef SAMPLES_PROOF_MAKE_CANVAS_H
#define SAMPLES_PROOF_MAKE_CANVAS_H

#include <string>

#include "samples/proof/make/picture.h"
#include "samples/proof/outlines.h"

namespace Proof {

struct Area {
    double x, y, width, height;
};

/// A colour of the screen, 0..255 each.
struct Rgb {
    int r = 0, g = 0, b = 0;
};

class Canvas {
 public:
    virtual ~Canvas() = default;

    virtual void fillArea(const Area& area, Rgb colour) = 0;
    /// A thin black frame.
    virtual void frameArea(const Area& area) = 0;
    /// text is UTF-8; (x, y) is the start of its baseline.
    virtual void drawText(double x, double y, double size, const std::string& text) = 0;
    /// The whole page of outlines at its true size, its lower left corner at
    /// (x, y).
    virtual void drawOutlines(double x, double y, const OutlinePage& page) = 0;
    /// The picture stretched to the area.
    virtual void drawPicture(const Area& area, const Picture& picture) = 0;
    /// Leads from the area to a URL, where the reader can follow it.
    virtual void linkArea(const Area& area, const std::string& url) = 0;
};

}  // namespace Proof

#endif
