// What the use elements of an SVG file refer to.

#ifndef SAMPLES_PROOF_CHECK_SVG_REFERENCES_H
#define SAMPLES_PROOF_CHECK_SVG_REFERENCES_H

#include <libxml/tree.h>

#include <string>
#include <unordered_map>

namespace Proof {

constexpr const char* kSvgNamespace = "http://www.w3.org/2000/svg";

/// The elements of a tree by their ids. The first one of an id counts.
class SvgReferences {
 public:
    /// Elements are found by root's tree, which outlives this object. References
    /// that stand in a plain href, as SVG 2 has them, are moved to xlink:href,
    /// where SVG 1.1 and svgpp look; of both the plain one counts.
    explicit SvgReferences(xmlNode* root);

    /// Null where no element has the id, and for an empty one.
    xmlNode* find(const std::string& id) const;

 private:
    std::unordered_map<std::string, xmlNode*> mElements;
};

}  // namespace Proof

#endif
