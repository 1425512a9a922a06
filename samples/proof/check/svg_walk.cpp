// svgpp walks the tree and calls the context below for whatever it reads: the
// transforms of an element before its content, the steps of its path before or
// after its own transform. So steps wait until all attributes are read.

#include "samples/proof/check/svg_walk.h"

#include <array>
#include <boost/mpl/fold.hpp>
#include <boost/mpl/insert.hpp>
#include <boost/mpl/set.hpp>
#include <boost/mpl/vector.hpp>
#include <cmath>
#include <type_traits>

#include "samples/proof/numbers.h"
#include "vaskel/geometry.h"

#define SVGPP_INTERCEPT_EXCEPTIONS
#include <svgpp/policy/xml/libxml2.hpp>
#include <svgpp/svgpp.hpp>

namespace Proof {
namespace {

namespace tag = svgpp::tag;

constexpr double kTurn = boost::math::constants::two_pi<double>();
// Of the circle whose image an arc is: arccub works in whole units, and a
// quarter's chord is within the int range.
constexpr double kRadius = 1 << 30;

template <class Element>
constexpr const char* nameOf() {
    if constexpr (std::is_same_v<Element, tag::element::rect>) return "rect";
    if constexpr (std::is_same_v<Element, tag::element::circle>) return "circle";
    if constexpr (std::is_same_v<Element, tag::element::ellipse>) return "ellipse";
    if constexpr (std::is_same_v<Element, tag::element::line>) return "line";
    if constexpr (std::is_same_v<Element, tag::element::polyline>) return "polyline";
    if constexpr (std::is_same_v<Element, tag::element::polygon>) return "polygon";
    return "path";
}

class Reader {
 public:
    explicit Reader(Drawing& drawing) : mDrawing(drawing) { mLevels.resize(1); }

    // ---- elements ----

    template <class Element>
    void on_enter_element(Element) {
        mLevels.push_back({{}, mLevels.back().lengths, {nameOf<Element>(), {}, {}}});
    }
    // All attributes of an element are read, its path and its transform too.
    void endAttributes() {
        Level& level = mLevels.back();
        if (level.path.steps.empty()) return;
        placeSteps(level.path.steps);
        mDrawing.paths.push_back(std::move(level.path));
    }
    void on_exit_element() { mLevels.pop_back(); }

    template <class Range>
    void set(tag::attribute::id, Range id) {
        mLevels.back().path.id.assign(id.begin(), id.end());
    }

    // ---- transforms and lengths ----

    void transform_matrix(const boost::array<double, 6>& m) {
        Matrix& own = mLevels.back().matrix;
        own = own * Matrix{m[0], m[1], m[2], m[3], m[4], m[5]};
    }

    void set_viewport(double, double, double width, double height) {
        if (mLevels.size() == 1) mDrawing.width = width, mDrawing.height = height;
        mLevels.back().lengths.set_viewport_size(width, height);
    }
    void set_viewbox_size(double width, double height) {
        mLevels.back().lengths.set_viewport_size(width, height);
    }
    void disable_rendering() {}  // only what is drawn has no size; its paths have

    using length_factory_type = svgpp::factory::length::unitless<double, double>;
    const length_factory_type& length_factory() const { return mLevels.back().lengths; }

    // ---- steps ----

    void path_move_to(double x, double y, tag::coordinate::absolute) {
        add({PathStep::Move, 0, 0, 0, 0, x, y});
    }
    void path_line_to(double x, double y, tag::coordinate::absolute) {
        add({PathStep::Line, 0, 0, 0, 0, x, y});
    }
    void path_cubic_bezier_to(double x1, double y1, double x2, double y2, double x, double y,
                              tag::coordinate::absolute) {
        add({PathStep::Curve, x1, y1, x2, y2, x, y});
    }
    void path_elliptical_arc_to(double rx, double ry, double degrees, bool large, bool sweep,
                                double x, double y, tag::coordinate::absolute) {
        addArc(rx, ry, degrees / 360 * kTurn, large, sweep, x, y);
    }
    void path_close_subpath() {
        add({PathStep::Close, 0, 0, 0, 0, mLevels.back().startX, mLevels.back().startY});
    }
    void path_exit() {}

    /// The outermost svg element's own transform, from user units to pixels.
    const Matrix& toPixels() const { return mLevels.front().matrix; }

 private:
    struct Level {
        Matrix matrix;
        length_factory_type lengths;
        DrawnPath path;
        double startX = 0, startY = 0;  // of the subpath
        double x = 0, y = 0;            // the current point
    };

    void add(const PathStep& step) {
        Level& level = mLevels.back();
        level.path.steps.push_back(step);
        level.x = step.x;
        level.y = step.y;
        if (step.kind == PathStep::Move) level.startX = step.x, level.startY = step.y;
    }

    // SVG 1.1, appendix F.6: from the ends to the centre and its angles. The arc
    // is an image of one of a circle, whose parts of at most a quarter arccub
    // makes. The last point is the one that the file states, so that an outline
    // of arcs ends where it began.
    void addArc(double rx, double ry, double phi, bool large, bool sweep, double x, double y) {
        const double fromX = mLevels.back().x, fromY = mLevels.back().y;
        if (fromX == x && fromY == y) return;
        double cx = 0, cy = 0, theta1 = 0, theta2 = 0;
        if (rx != 0 && ry != 0)
            svgpp::arc_endpoint_to_center(fromX, fromY, x, y, rx, ry, phi, large, sweep, cx, cy,
                                          theta1, theta2);
        if (rx == 0 || ry == 0 || !std::isfinite(theta1 + theta2 + cx + cy + rx + ry))
            return path_line_to(x, y, {});
        if (sweep && theta2 < theta1) theta2 += kTurn;
        if (!sweep && theta2 > theta1) theta2 -= kTurn;
        const Matrix image =
            Matrix{std::cos(phi), std::sin(phi), -std::sin(phi), std::cos(phi), cx, cy} *
            Matrix{rx / kRadius, 0, 0, ry / kRadius, 0, 0};
        const int parts =
            std::max(1, static_cast<int>(std::ceil(std::abs(theta2 - theta1) / kTurn * 4 - 1e-9)));
        for (int i = 0; i < parts; ++i)
            addArcPart(image, theta1 + (theta2 - theta1) * i / parts,
                       theta1 + (theta2 - theta1) * (i + 1) / parts);
        PathStep& last = mLevels.back().path.steps.back();
        mLevels.back().x = last.x = x;
        mLevels.back().y = last.y = y;
    }

    void addArcPart(const Matrix& image, double from, double to) {
        Pemmit::bezier bezier;
        Vaskel::arccub({0, 0, kRadius * std::cos(from), kRadius * std::sin(from),
                        kRadius * std::cos(to), kRadius * std::sin(to)},
                       bezier);
        for (auto& point : bezier.p) image.apply(point.x, point.y);
        const auto& p = bezier.p;
        if (std::isfinite(p[1].x + p[1].y + p[2].x + p[2].y))
            add({PathStep::Curve, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y});
        else  // shorter than arccub's whole units
            path_line_to(p[3].x, p[3].y, {});
    }

    // From the element's own units to those of the outermost svg element.
    void placeSteps(std::vector<PathStep>& steps) const {
        Matrix matrix;
        for (std::size_t i = 1; i < mLevels.size(); ++i) matrix = matrix * mLevels[i].matrix;
        for (PathStep& step : steps) {
            if (step.kind == PathStep::Curve) {
                place(matrix, step.x1, step.y1);
                place(matrix, step.x2, step.y2);
            }
            place(matrix, step.x, step.y);
        }
    }

    static void place(const Matrix& matrix, double& x, double& y) {
        matrix.apply(x, y);
        for (const double value : {x, y})
            if (!(std::abs(value) <= kFarthest))  // not-a-number too
                throw SvgProblem{"a coordinate is farther from 0 than " +
                                 grouped(static_cast<unsigned long long>(kFarthest)) + " units"};
    }

    Drawing& mDrawing;
    std::vector<Level> mLevels;  // [0]: the outermost svg element
};

// What svgpp does not know is passed over, what it cannot read is a problem.
struct Policy {
    using context_type = Reader;
    using intercepted_exception_type = SvgProblem;

    template <class... Any>
    static bool unknown_element(const Any&...) {
        return true;
    }
    template <class... Any>
    static bool unexpected_element(const Any&...) {
        return true;
    }
    template <class... Any>
    static bool unknown_attribute(const Any&...) {
        return true;
    }
    template <class... Any>
    static bool unexpected_attribute(const Any&...) {
        return true;
    }
    template <class... Any>
    static bool required_attribute_not_found(const Any&...) {
        return true;  // without it there is nothing to draw
    }
    template <class Attribute, class Value>
    [[noreturn]] static bool parse_failed(const Reader&, Attribute, const Value&) {
        throw SvgProblem{"attribute " + nameOfAttribute<Attribute>() + " cannot be read"};
    }
    template <class Attribute>
    [[noreturn]] static bool negative_value(const Reader&, Attribute) {
        throw SvgProblem{"attribute " + nameOfAttribute<Attribute>() + " is negative"};
    }
    [[noreturn]] static bool add_element_info(SvgProblem& problem, const xmlNode* element) {
        if (problem.line == 0) problem.line = xmlGetLineNo(element);
        throw problem;
    }

 private:
    template <class Attribute>
    static std::string nameOfAttribute() {
        return svgpp::attribute_name<char>::get<Attribute>();
    }
};

struct Control : svgpp::policy::document_traversal_control::default_policy<Reader> {
    static bool proceed_to_element_content(Reader& reader) {
        reader.endAttributes();
        return true;
    }
};

// Quadratic curves as cubic ones, arcs as they are.
struct PathPolicy : svgpp::policy::path::no_shorthands {
    static const bool quadratic_bezier_as_cubic = true;
};

using Elements = boost::mpl::set<tag::element::svg, tag::element::g, tag::element::a,
                                 tag::element::switch_, tag::element::path, tag::element::rect,
                                 tag::element::line, tag::element::circle, tag::element::ellipse,
                                 tag::element::polyline, tag::element::polygon>::type;
template <class Attribute>
using OfSvg = boost::mpl::pair<tag::element::svg, Attribute>;
using ViewportAttributes =
    boost::mpl::vector<OfSvg<tag::attribute::x>, OfSvg<tag::attribute::y>,
                       OfSvg<tag::attribute::width>, OfSvg<tag::attribute::height>,
                       OfSvg<tag::attribute::viewBox>, OfSvg<tag::attribute::preserveAspectRatio>>;
using CommonAttributes = boost::mpl::vector<tag::attribute::transform, tag::attribute::id>;
template <class Set, class Added>
using Union =
    typename boost::mpl::fold<Added, Set, boost::mpl::insert<boost::mpl::_1, boost::mpl::_2>>::type;
using Attributes =
    Union<Union<svgpp::traits::shapes_attributes_by_element, ViewportAttributes>, CommonAttributes>;
using Traversal = svgpp::document_traversal<
    svgpp::processed_elements<Elements>, svgpp::processed_attributes<Attributes>,
    svgpp::path_policy<PathPolicy>, svgpp::viewport_policy<svgpp::policy::viewport::as_transform>,
    svgpp::length_policy<svgpp::policy::length::forward_to_method<Reader>>,
    svgpp::error_policy<Policy>, svgpp::document_traversal_control_policy<Control>>;

}  // namespace

Matrix walkSvg(xmlNode* root, Drawing& drawing) {
    Reader reader(drawing);
    Traversal::load_document(root, reader);
    return reader.toPixels();
}

}  // namespace Proof
