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

}  // namespace Proof

#endif
