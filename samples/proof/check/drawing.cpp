#include "samples/proof/check/drawing.h"

#include <algorithm>
#include <cmath>

#include "embedded/document.h"
#include "embedded/host.h"

namespace Proof {
namespace {

// Sets how far walks may be from curves while it lives; 0.5 distances again
// afterwards.
class Flatness {
 public:
    explicit Flatness(double distance) { Embedded::setFlatness(std::max(distance, 0.5)); }
    ~Flatness() { Embedded::setFlatness(0.5); }
    Flatness(const Flatness&) = delete;
    Flatness& operator=(const Flatness&) = delete;
};

// Builds one contour after the other.
class Builder {
 public:
    Builder(Pemmit::Path* compound, const Grid& grid) : mCompound(compound), mGrid(grid) {}

    void add(const PathStep& step) {
        const int x = mGrid.place(step.x), y = mGrid.place(step.y);
        switch (step.kind) {
            case PathStep::Move:
                finish(false);
                begin(x, y);
                break;
            case PathStep::Close:
                finish(true);
                begin(mStartX, mStartY);
                break;
            case PathStep::Line:
                if (x != mX || y != mY) Pemmit::patlin(contour(), x, y);
                break;
            case PathStep::Curve:
                addCurve(mGrid.place(step.x1), mGrid.place(step.y1), mGrid.place(step.x2),
                         mGrid.place(step.y2), x, y);
        }
        if (step.kind == PathStep::Line || step.kind == PathStep::Curve) mX = x, mY = y;
    }

    void finish(bool closed) {
        if (!mContour) return;
        Pemmit::Path* const contour = static_cast<Pemmit::Path*>(mContour.get());
        if (closed)
            Embedded::closeContour(contour);
        else
            Pemmit::flaset(contour, Pemmit::kFlagOpen, true);
        if (Pemmit::patsiz(contour) > 1 && Embedded::addChild(mCompound, contour))
            static_cast<void>(mContour.release());
        mContour.reset();
    }

 private:
    void begin(int x, int y) {
        mStartX = mX = x;
        mStartY = mY = y;
    }

    // The contour in progress, begun where its first line or curve begins.
    Pemmit::Path* contour() {
        if (!mContour) {
            Pemmit::Path* const path = Pemmit::patbeg();
            mContour.reset(path);
            Pemmit::patlin(path, mX, mY);
        }
        return static_cast<Pemmit::Path*>(mContour.get());
    }

    void addCurve(int x1, int y1, int x2, int y2, int x, int y) {
        const auto here = [&](int px, int py) { return px == mX && py == mY; };
        if (here(x1, y1) && here(x2, y2) && here(x, y)) return;
        Embedded::addCurve(contour(), x1, y1, x2, y2, x, y);
    }

    Pemmit::Path* mCompound;
    const Grid& mGrid;
    ObjectPtr mContour;
    int mStartX = 0, mStartY = 0;
    int mX = 0, mY = 0;
};

}  // namespace

Grid::Grid(const Drawing& drawing) {
    for (const DrawnPath& path : drawing.paths)
        for (const PathStep& step : path.steps) {
            for (const double value : {step.x, step.y})
                mExtent = std::max(mExtent, std::abs(value));
            if (step.kind == PathStep::Curve)
                for (const double value : {step.x1, step.y1, step.x2, step.y2})
                    mExtent = std::max(mExtent, std::abs(value));
        }
    while (mPerUnit < (1 << 16) && mExtent * mPerUnit * 2 <= (1 << 24)) mPerUnit *= 2;
}

int Grid::place(double coordinate) const {
    return static_cast<int>(std::lround(coordinate * mPerUnit));
}

ObjectPtr makeObject(const DrawnPath& path, const Grid& grid, double flatness) {
    const Flatness set(flatness * grid.perUnit());
    Pemmit::Path* const compound = Embedded::makeCompound();
    ObjectPtr object(compound);
    Builder builder(compound, grid);
    for (const PathStep& step : path.steps) builder.add(step);
    builder.finish(false);
    return object;
}

}  // namespace Proof
