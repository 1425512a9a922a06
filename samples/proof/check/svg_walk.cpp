// svgpp walks the tree and calls the context below for whatever it reads: the
// transforms of an element before its content, the steps of its path before or
// after its own transform. So steps wait until all attributes are read.

#include "samples/proof/check/svg_walk.h"

#include <algorithm>
#include <array>
#include <boost/mpl/fold.hpp>
#include <boost/mpl/insert.hpp>
#include <boost/mpl/set.hpp>
#include <boost/mpl/vector.hpp>
#include <cmath>
#include <optional>
#include <type_traits>

#include "samples/proof/check/svg_arc.h"
#include "samples/proof/check/svg_references.h"
#include "samples/proof/check/xml_tree.h"
#include "samples/proof/numbers.h"

#define SVGPP_INTERCEPT_EXCEPTIONS
#include <svgpp/policy/xml/libxml2.hpp>
#include <svgpp/svgpp.hpp>

namespace Proof {
namespace {

namespace tag = svgpp::tag;

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
    Reader(Drawing& drawing, const SvgReferences& references)
        : mDrawing(drawing), mReferences(references) {
        mLevels.resize(1);
    }

    // ---- elements ----

    template <class Element>
    void on_enter_element(Element) {
        mLevels.push_back({{}, mLevels.back().lengths, {nameOf<Element>(), {}, {}}, {}});
        mLevels.back().isUse = std::is_same_v<Element, tag::element::use_>;
        countUsed(1);
    }
    // All attributes of an element are read, its path and its transform too.
    void endAttributes() {
        Level& level = mLevels.back();
        if (level.isUse) return drawUsed();
        if (level.path.steps.empty()) return;
        countUsed(static_cast<long>(level.path.steps.size()));
        placeSteps(level.path.steps);
        mDrawing.paths.push_back(std::move(level.path));
    }
    void on_exit_element() { mLevels.pop_back(); }

    template <class Range>
    void set(tag::attribute::id, Range id) {
        mLevels.back().path.id.assign(id.begin(), id.end());
    }

    // ---- what a use element refers to ----

    template <class Range>
    void set(tag::attribute::xlink::href, tag::iri_fragment, Range id) {
        mLevels.back().use.id.assign(id.begin(), id.end());
    }
    template <class Range>
    void set(tag::attribute::xlink::href, Range) {}  // another file, which is not read
    void set(tag::attribute::x, double x) { mLevels.back().use.x = x; }
    void set(tag::attribute::y, double y) { mLevels.back().use.y = y; }
    void set(tag::attribute::width, double width) { mLevels.back().use.width = width; }
    void set(tag::attribute::height, double height) { mLevels.back().use.height = height; }

    // Asked where a symbol or svg element is used; what is not stated there stays.
    void get_reference_viewport_size(double& width, double& height) const {
        const Use& use = mLevels.at(mLevels.size() - 2).use;
        width = use.width.value_or(width);
        height = use.height.value_or(height);
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
        const Level& level = mLevels.back();
        for (const PathStep& step :
             arcSteps(level.x, level.y, {rx, ry, degrees, large, sweep, x, y}))
            add(step);
    }
    void path_close_subpath() {
        add({PathStep::Close, 0, 0, 0, 0, mLevels.back().startX, mLevels.back().startY});
    }
    void path_exit() {}

    /// The outermost svg element's own transform, from user units to pixels.
    const Matrix& toPixels() const { return mLevels.front().matrix; }

 private:
    struct Use {
        std::string id;
        double x = 0, y = 0;
        std::optional<double> width, height;
    };
    struct Level {
        Matrix matrix;
        length_factory_type lengths;
        DrawnPath path;
        Use use;
        bool isUse = false;
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

    // Draws the element that the innermost one, a use element, refers to, as a
    // child of it. SVG 1.1, section 5.6.
    void drawUsed();

    // Adds to what use elements made so far.
    void countUsed(long added) {
        if (mInUse.empty()) return;
        mUsed += added;
        if (mUsed > kMostUsed)
            throw SvgProblem{"use elements make more than " +
                             grouped(static_cast<unsigned long long>(kMostUsed)) +
                             " elements and steps"};
    }

    Drawing& mDrawing;
    const SvgReferences& mReferences;
    std::vector<Level> mLevels;          // [0]: the outermost svg element
    std::vector<const xmlNode*> mInUse;  // what is being drawn for use elements
    long mUsed = 0;
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

using Elements =
    boost::mpl::set<tag::element::svg, tag::element::g, tag::element::a, tag::element::switch_,
                    tag::element::path, tag::element::rect, tag::element::line,
                    tag::element::circle, tag::element::ellipse, tag::element::polyline,
                    tag::element::polygon, tag::element::use_>::type;
// A symbol is drawn where it is used only.
using UsedElements = boost::mpl::insert<Elements, tag::element::symbol>::type;
template <class Attribute>
using OfSvg = boost::mpl::pair<tag::element::svg, Attribute>;
using ViewportAttributes =
    boost::mpl::vector<OfSvg<tag::attribute::x>, OfSvg<tag::attribute::y>,
                       OfSvg<tag::attribute::width>, OfSvg<tag::attribute::height>,
                       OfSvg<tag::attribute::viewBox>, OfSvg<tag::attribute::preserveAspectRatio>>;
template <class Attribute>
using OfUse = boost::mpl::pair<tag::element::use_, Attribute>;
template <class Attribute>
using OfSymbol = boost::mpl::pair<tag::element::symbol, Attribute>;
using UseAttributes =
    boost::mpl::vector<OfUse<tag::attribute::xlink::href>, OfUse<tag::attribute::x>,
                       OfUse<tag::attribute::y>, OfUse<tag::attribute::width>,
                       OfUse<tag::attribute::height>, OfSymbol<tag::attribute::viewBox>,
                       OfSymbol<tag::attribute::preserveAspectRatio>>;
using CommonAttributes = boost::mpl::vector<tag::attribute::transform, tag::attribute::id>;
template <class Set, class Added>
using Union =
    typename boost::mpl::fold<Added, Set, boost::mpl::insert<boost::mpl::_1, boost::mpl::_2>>::type;
using Attributes = Union<
    Union<Union<svgpp::traits::shapes_attributes_by_element, ViewportAttributes>, UseAttributes>,
    CommonAttributes>;
using Traversal = svgpp::document_traversal<
    svgpp::processed_elements<Elements>, svgpp::processed_attributes<Attributes>,
    svgpp::path_policy<PathPolicy>, svgpp::viewport_policy<svgpp::policy::viewport::as_transform>,
    svgpp::length_policy<svgpp::policy::length::forward_to_method<Reader>>,
    svgpp::error_policy<Policy>, svgpp::document_traversal_control_policy<Control>>;

void Reader::drawUsed() {
    Level& level = mLevels.back();
    xmlNode* const element = mReferences.find(level.use.id);
    if (!element) {
        ++mDrawing.lost;
        return;
    }
    if (std::find(mInUse.begin(), mInUse.end(), element) != mInUse.end())
        throw SvgProblem{"a use element refers to itself"};
    if (mLevels.size() > static_cast<std::size_t>(kMostNested))
        throw SvgProblem{"use elements nest elements more than " + std::to_string(kMostNested) +
                         " deep"};
    level.matrix = level.matrix * Matrix{1, 0, 0, 1, level.use.x, level.use.y};
    mInUse.push_back(element);
    Traversal::load_referenced_element<svgpp::referencing_element<tag::element::use_>,
                                       svgpp::expected_elements<svgpp::traits::reusable_elements>,
                                       svgpp::processed_elements<UsedElements>>::load(element,
                                                                                      *this);
    mInUse.pop_back();
}

}  // namespace

Matrix walkSvg(xmlNode* root, Drawing& drawing) {
    const SvgReferences references(root);
    Reader reader(drawing, references);
    Traversal::load_document(root, reader);
    return reader.toPixels();
}

}  // namespace Proof
