// Point in path by an index: a segment tree over the x coordinates.
//
// An edge takes part in the test of x when x lies in its half-open x span. The
// tree cuts every span into the ranges of log n nodes, and the nodes on the way
// to x hold exactly the edges that take part. A node's edges all reach across
// its range. Where none of them cross there, they are kept from bottom to top,
// and the edges below a point are counted by halving. Upright edges never take
// part, they only hold points; they are kept by x as ranges of y.
//
// Taking all edges of the path together gives insidePath's answer although that
// looks at one contour after another: a contour below the point, which
// insidePath decides by its ends, is crossed as often by its edges, one above
// not at all, and an edge that holds the point decides at once in both.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <vector>

#include "geometry/edge_test.h"
#include "geometry/point_runs.h"
#include "vaskel/geometry.h"

namespace Vaskel {
namespace {

__extension__ typedef __int128 Wide;

// An edge that is not upright; from left to right once it is in the tree.
struct Edge {
    int ax, ay, bx, by;

    // Negative, 0 or positive as the edge lies below, at or above the other one
    // at x, which lies in both spans. Numerators stay within 2^64, times a
    // width below 2^32.
    friend int compareAt(const Edge& e, const Edge& f, int x) {
        const auto numerator = [x](const Edge& g) {
            return Wide{g.ay} * (std::int64_t{g.bx} - g.ax) +
                   Wide{std::int64_t{g.by} - g.ay} * (std::int64_t{x} - g.ax);
        };
        const Wide left = numerator(e) * (std::int64_t{f.bx} - f.ax);
        const Wide right = numerator(f) * (std::int64_t{e.bx} - e.ax);
        return (left > right) - (left < right);
    }
    double heightAt(double x) const {
        return ay + (static_cast<double>(by) - ay) * (x - ax) / (static_cast<double>(bx) - ax);
    }
};

struct Upright {
    int x, low, high;
};

// The edges of a node: indices into the edges, from position begin to end.
struct Node {
    std::uint32_t begin = 0, end = 0;
    bool ordered = true;
};

}  // namespace

class preparedPath::Index {
 public:
    explicit Index(const Pemmit::Path* path);
    bool inside(int x, int y) const;

 private:
    void collect(const Pemmit::Object* contour);
    void addEdge(int px, int py, int cx, int cy);
    void mergeUprights();
    void buildTree();
    template <class Visit>
    void visitNodes(const Edge& edge, Visit visit) const;
    void orderNode(Node& node, int left, int right);
    bool holdsUpright(int x, int y) const;
    bool askNode(const Node& node, int x, int y, bool& inside) const;

    std::size_t leafOf(int x) const {  // the last coordinate that is not above x
        return static_cast<std::size_t>(std::upper_bound(mX.begin(), mX.end(), x) - mX.begin()) - 1;
    }

    Pemmit::Box mBox;
    bool mWraps = false;  // coordinates beyond half the 32-bit range
    std::vector<Edge> mEdges;
    std::vector<Upright> mUprights;  // apart from each other, by x, then y
    std::vector<int> mX;             // the ends of all edges, each once
    std::vector<Node> mNodes;        // node i has the children 2i and 2i + 1, leaves come last
    std::size_t mLeaves = 0;
    std::vector<std::uint32_t> mEntries;
};

preparedPath::Index::Index(const Pemmit::Path* path) {
    if (!path) return;
    mBox = path->box;
    Pemmit::queryseq contours;
    const bool isList = (path->flags & Pemmit::kFlagChildren) != 0;
    for (const Pemmit::Object* contour = contours.quebeg(path, nullptr); contour;
         contour = isList ? contour->next : nullptr)
        collect(contour);
    mergeUprights();
    if (!mWraps) buildTree();
}

void preparedPath::Index::collect(const Pemmit::Object* contour) {
    RunWalk walk(contour, 0, -1);
    PointRun run;
    if (!walk.next(run)) return;
    WalkPoint last = run[0];
    int begin = 1;
    do {
        for (int i = begin; i < run.count; ++i) {
            addEdge(last.x, last.y, run[i].x, run[i].y);
            last = run[i];
        }
        begin = 0;
    } while (walk.next(run));
}

void preparedPath::Index::addEdge(int px, int py, int cx, int cy) {
    constexpr int half = 1 << 30;
    for (const int coordinate : {px, py, cx, cy})
        if (coordinate < -half || coordinate >= half) mWraps = true;
    if (px == cx)
        mUprights.push_back({px, std::min(py, cy), std::max(py, cy)});
    else
        mEdges.push_back({px, py, cx, cy});  // as walked: wrapped differences have a direction
}

void preparedPath::Index::mergeUprights() {
    std::sort(mUprights.begin(), mUprights.end(), [](const Upright& a, const Upright& b) {
        return a.x < b.x || (a.x == b.x && a.low < b.low);
    });
    std::size_t kept = 0;
    for (const Upright& upright : mUprights) {
        if (kept > 0 && mUprights[kept - 1].x == upright.x &&
            mUprights[kept - 1].high >= upright.low)
            mUprights[kept - 1].high = std::max(mUprights[kept - 1].high, upright.high);
        else
            mUprights[kept++] = upright;
    }
    mUprights.resize(kept);
}

// Calls visit for the nodes whose ranges make up the edge's span.
template <class Visit>
void preparedPath::Index::visitNodes(const Edge& edge, Visit visit) const {
    std::size_t low = leafOf(edge.ax) + mLeaves, high = leafOf(edge.bx) + mLeaves;
    for (; low < high; low /= 2, high /= 2) {
        if (low % 2) visit(low++);
        if (high % 2) visit(--high);
    }
}

void preparedPath::Index::buildTree() {
    for (Edge& edge : mEdges) {
        if (edge.ax > edge.bx) edge = {edge.bx, edge.by, edge.ax, edge.ay};
        mX.push_back(edge.ax);
        mX.push_back(edge.bx);
    }
    std::sort(mX.begin(), mX.end());
    mX.erase(std::unique(mX.begin(), mX.end()), mX.end());
    for (mLeaves = 1; mLeaves < mX.size();) mLeaves *= 2;
    mNodes.resize(2 * mLeaves);

    // Positions have 32 bits. A node holds an edge once, so that neither a
    // node's count nor an edge's number exceeds the number of all entries. An
    // edge has at most two nodes on each of at most 31 levels: fewer than 2^26
    // edges never come to the limit.
    std::size_t entries = 0;
    for (const Edge& edge : mEdges)
        visitNodes(edge, [&](std::size_t node) {
            ++mNodes[node].end;
            ++entries;
        });
    if (entries > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
    std::uint32_t sum = 0;
    for (Node& node : mNodes) {
        node.begin = sum;
        sum += node.end;
        node.end = node.begin;
    }
    mEntries.resize(entries);
    for (std::uint32_t i = 0; i < mEdges.size(); ++i)
        visitNodes(mEdges[i], [&](std::size_t node) { mEntries[mNodes[node].end++] = i; });

    for (std::size_t width = mLeaves, first = 1; first < mNodes.size(); width /= 2, first *= 2)
        for (std::size_t i = first; i < 2 * first; ++i) {
            const std::size_t leftLeaf = (i - first) * width;
            if (mNodes[i].begin == mNodes[i].end) continue;
            // Nodes with edges end at a coordinate: spans do.
            orderNode(mNodes[i], mX[leftLeaf], mX[leftLeaf + width]);
        }
}

// Sorts a node's edges from bottom to top, or finds that they cross within its
// range. Sorted by their heights in the middle in double precision first, so
// that few exact comparisons are needed.
void preparedPath::Index::orderNode(Node& node, int left, int right) {
    const auto begin = mEntries.begin() + node.begin, end = mEntries.begin() + node.end;
    if (end - begin < 2) return;
    const double middle = (static_cast<double>(left) + right) / 2;
    std::vector<std::pair<double, std::uint32_t>> heights;
    heights.reserve(static_cast<std::size_t>(end - begin));
    for (auto it = begin; it != end; ++it) heights.emplace_back(mEdges[*it].heightAt(middle), *it);
    std::sort(heights.begin(), heights.end());
    auto out = begin;
    for (const auto& [height, edge] : heights) *out++ = edge;
    node.ordered = std::adjacent_find(begin, end, [&](std::uint32_t a, std::uint32_t b) {
                       return compareAt(mEdges[a], mEdges[b], left) > 0 ||
                              compareAt(mEdges[a], mEdges[b], right) > 0;
                   }) == end;
}

bool preparedPath::Index::holdsUpright(int x, int y) const {
    const auto above = std::upper_bound(mUprights.begin(), mUprights.end(), std::pair(x, y),
                                        [](const std::pair<int, int>& p, const Upright& upright) {
                                            return p.first < upright.x ||
                                                   (p.first == upright.x && p.second < upright.low);
                                        });
    if (above == mUprights.begin()) return false;
    const Upright& nearest = *std::prev(above);
    return nearest.x == x && nearest.high >= y;
}

// Flips inside once for each edge of the node below the point; true when one of
// them holds it.
bool preparedPath::Index::askNode(const Node& node, int x, int y, bool& inside) const {
    const auto answer = [&](std::uint32_t i) {
        const Edge& e = mEdges[i];
        return testEdge(x, y, e.ax, e.ay, e.bx, e.by);
    };
    const auto begin = mEntries.begin() + node.begin, end = mEntries.begin() + node.end;
    if (node.ordered) {
        const auto firstNotBelow = std::partition_point(
            begin, end, [&](std::uint32_t i) { return answer(i) == EdgeAnswer::kCrosses; });
        if (firstNotBelow != end && answer(*firstNotBelow) == EdgeAnswer::kHoldsPoint) return true;
        if ((firstNotBelow - begin) % 2) inside = !inside;
        return false;
    }
    for (auto it = begin; it != end; ++it) {
        const EdgeAnswer found = answer(*it);
        if (found == EdgeAnswer::kHoldsPoint) return true;
        if (found == EdgeAnswer::kCrosses) inside = !inside;
    }
    return false;
}

bool preparedPath::Index::inside(int x, int y) const {
    if (x < mBox.minX || x > mBox.maxX || y < mBox.minY || y > mBox.maxY) return false;
    if (holdsUpright(x, y)) return true;
    bool inside = false;
    if (mWraps) {
        for (const Edge& e : mEdges) {
            const EdgeAnswer answer = testEdge(x, y, e.ax, e.ay, e.bx, e.by);
            if (answer == EdgeAnswer::kHoldsPoint) return true;
            if (answer == EdgeAnswer::kCrosses) inside = !inside;
        }
        return inside;
    }
    if (mX.empty() || x < mX.front() || x >= mX.back()) return false;
    for (std::size_t node = leafOf(x) + mLeaves; node > 0; node /= 2)
        if (askNode(mNodes[node], x, y, inside)) return true;
    return inside;
}

preparedPath::preparedPath(const Pemmit::Path* path) : mIndex(std::make_shared<Index>(path)) {}
preparedPath::preparedPath(const preparedPath& other) = default;
preparedPath& preparedPath::operator=(const preparedPath& other) = default;
preparedPath::~preparedPath() = default;

bool preparedPath::inside(int x, int y) const { return mIndex->inside(x, y); }

}  // namespace Vaskel
