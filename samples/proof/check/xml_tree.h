// XML files as a tree, read with libxml2 and safe to walk.

#ifndef SAMPLES_PROOF_CHECK_XML_TREE_H
#define SAMPLES_PROOF_CHECK_XML_TREE_H

#include <libxml/tree.h>

#include <memory>
#include <span>
#include <string>

namespace Proof {

struct XmlDocumentRemover {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XmlDocument = std::unique_ptr<xmlDoc, XmlDocumentRemover>;

/// How many elements may lie within each other.
constexpr int kMostNested = 256;

/// The tree of a document of any size. Nothing but the bytes is read: no
/// external entity, no DTD, no network. A document that declares entities of
/// its own is held to libxml2's limits (10 MB an attribute, bounded expansion).
/// Attributes without a value are taken out.
///
/// Throws Failure that names the file and, where there is one, the line.
XmlDocument readXml(const std::string& name, std::span<const unsigned char> bytes);

/// Calls visit(element, depth) for root, at depth 0, and all elements below it
/// in their order, without recursion.
template <class Visit>
void forEachElement(xmlNode* root, Visit visit) {
    int depth = 0;
    for (xmlNode* node = root;;) {
        if (node->type == XML_ELEMENT_NODE) visit(*node, depth);
        if (node->type == XML_ELEMENT_NODE && node->children) {
            ++depth;
            node = node->children;
            continue;
        }
        while (node != root && !node->next) node = node->parent, --depth;
        if (node == root) return;
        node = node->next;
    }
}

}  // namespace Proof

#endif
