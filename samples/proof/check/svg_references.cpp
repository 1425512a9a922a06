#include "samples/proof/check/svg_references.h"

#include <cstring>
#include <memory>
#include <new>

#include "samples/proof/check/xml_tree.h"

namespace Proof {
namespace {

constexpr const char* kLinkNamespace = "http://www.w3.org/1999/xlink";

const char* plain(const xmlChar* text) { return reinterpret_cast<const char*>(text); }
const xmlChar* xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

struct TextRemover {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using Text = std::unique_ptr<xmlChar, TextRemover>;

bool isUse(const xmlNode& element) {
    return element.ns && std::strcmp(plain(element.ns->href), kSvgNamespace) == 0 &&
           std::strcmp(plain(element.name), "use") == 0;
}

// A namespace of links that elements below root may name: the file's own, or a
// new one.
xmlNs* linkNamespace(xmlNode* root, xmlNode& element) {
    if (xmlNs* const own = xmlSearchNsByHref(element.doc, &element, xml(kLinkNamespace)))
        return own;
    xmlNs* const added = xmlNewNs(root, xml(kLinkNamespace), xml("vaskel-link"));
    if (!added) throw std::bad_alloc();
    return added;
}

void moveReference(xmlNode* root, xmlNode& element) {
    const Text reference(xmlGetNoNsProp(&element, xml("href")));
    if (!reference) return;
    if (!xmlSetNsProp(&element, linkNamespace(root, element), xml("href"), reference.get()))
        throw std::bad_alloc();
}

}  // namespace

SvgReferences::SvgReferences(xmlNode* root) {
    forEachElement(root, [&](xmlNode& element, int) {
        if (isUse(element)) moveReference(root, element);
        const Text id(xmlGetNoNsProp(&element, xml("id")));
        if (id && *id) mElements.emplace(plain(id.get()), &element);
    });
}

xmlNode* SvgReferences::find(const std::string& id) const {
    const auto found = mElements.find(id);
    return found == mElements.end() ? nullptr : found->second;
}

}  // namespace Proof
