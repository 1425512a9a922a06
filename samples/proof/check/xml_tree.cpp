#include "samples/proof/check/xml_tree.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>

#include <climits>

#include "samples/proof/failure.h"

namespace Proof {
namespace {

struct ContextRemover {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};
using Context = std::unique_ptr<xmlParserCtxt, ContextRemover>;

// What the parser's calls note while it reads.
struct Notes {
    bool declares = false;  // an entity
    std::string reason;     // of the first error
    int line = 0;
};

Notes& notesOf(void* user) {
    return *static_cast<Notes*>(static_cast<xmlParserCtxt*>(user)->_private);
}

// The first reading expects no entities and so needs no limits, which a large
// outline would exceed; where one is declared it stops.
void stopAtEntity(void* user, const xmlChar*, int, const xmlChar*, const xmlChar*, xmlChar*) {
    notesOf(user).declares = true;
    xmlStopParser(static_cast<xmlParserCtxt*>(user));
}

// The second reading knows entities of the document itself only.
void declareInternal(void* user, const xmlChar* name, int type, const xmlChar* publicId,
                     const xmlChar* systemId, xmlChar* content) {
    if (type == XML_INTERNAL_GENERAL_ENTITY)
        xmlSAX2EntityDecl(user, name, type, publicId, systemId, content);
}

// Later errors are often consequences of the first one.
void noteError(void* user, xmlError* problem) {
    Notes& notes = notesOf(user);
    if (problem->level < XML_ERR_ERROR || !notes.reason.empty() || !problem->message) return;
    notes.reason = std::string(problem->message).substr(0, 200);
    while (!notes.reason.empty() && notes.reason.back() == '\n') notes.reason.pop_back();
    notes.line = problem->line;
}

Failure notWellFormed(const std::string& name, const Notes& notes) {
    std::string reason = "is no well-formed XML";
    if (notes.line > 0) reason += ": line " + std::to_string(notes.line);
    if (!notes.reason.empty()) reason += ": " + notes.reason;
    return fileFailure(name, reason);
}

XmlDocument parse(const std::string& name, std::span<const unsigned char> bytes, bool entities,
                  bool& declares) {
    Notes notes;
    const Context context(xmlNewParserCtxt());
    if (!context) throw std::bad_alloc();
    context->_private = &notes;
    context->sax->entityDecl = entities ? declareInternal : stopAtEntity;
    context->sax->resolveEntity = nullptr;
    context->sax->serror = noteError;
    const int options = XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOCDATA | XML_PARSE_NOERROR |
                        XML_PARSE_NOWARNING | (entities ? 0 : XML_PARSE_HUGE);
    XmlDocument document(
        xmlCtxtReadMemory(context.get(), reinterpret_cast<const char*>(bytes.data()),
                          static_cast<int>(bytes.size()), nullptr, nullptr, options));
    declares = notes.declares;
    if (declares) return nullptr;
    if (context->lastError.code == XML_ERR_NO_MEMORY) throw std::bad_alloc();
    if (!document || !context->wellFormed || !xmlDocGetRootElement(document.get()))
        throw notWellFormed(name, notes);
    return document;
}

void dropEmptyAttributes(xmlNode& element) {
    for (xmlAttr *attribute = element.properties, *next; attribute; attribute = next) {
        next = attribute->next;
        if (!attribute->children) xmlRemoveProp(attribute);
    }
}

void tidy(const std::string& name, xmlNode* root) {
    forEachElement(root, [&](xmlNode& element, int depth) {
        dropEmptyAttributes(element);
        if (depth >= kMostNested && element.children)
            throw fileFailure(name, "nests elements more than " + std::to_string(kMostNested) +
                                        " deep, at line " + std::to_string(xmlGetLineNo(&element)));
    });
}

}  // namespace

XmlDocument readXml(const std::string& name, std::span<const unsigned char> bytes) {
    if (bytes.size() > INT_MAX) throw fileFailure(name, "is larger than 2 GB");
    bool declares = false;
    XmlDocument document = parse(name, bytes, false, declares);
    if (declares) document = parse(name, bytes, true, declares);
    tidy(name, xmlDocGetRootElement(document.get()));
    return document;
}

}  // namespace Proof
