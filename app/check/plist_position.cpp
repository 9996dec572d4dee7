#include "app/check/plist_position.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>

namespace velto::app {

namespace {

std::uint64_t bigEndian(const plat::Bytes& bytes, std::size_t at, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[at + i];
    return value;
}

// A binary list is an object table, an offset table and a 32-byte trailer that says where
// the offsets are; what points outside the file is where it breaks.
std::string binaryBreak(const plat::Bytes& bytes) {
    constexpr std::size_t kHeader = 8, kTrailer = 32;
    if (bytes.size() < kHeader + kTrailer)
        return "the binary list ends at byte " + std::to_string(bytes.size()) +
               ", before its trailer";
    const std::size_t trailer = bytes.size() - kTrailer;
    const std::size_t offsetSize = bytes[trailer + 6];
    const std::uint64_t objects = bigEndian(bytes, trailer + 8, 8);
    const std::uint64_t table = bigEndian(bytes, trailer + 24, 8);
    if (offsetSize < 1 || offsetSize > 8 || table < kHeader || table > trailer ||
        objects > (trailer - table) / offsetSize)
        return "the binary list's trailer at byte " + std::to_string(trailer) +
               " points outside the file";
    for (std::uint64_t i = 0; i < objects; ++i) {
        const std::uint64_t at = bigEndian(bytes, table + i * offsetSize, offsetSize);
        if (at < kHeader || at >= table)
            return "the binary list's object " + std::to_string(i) + " is said to be at byte " +
                   std::to_string(at) + ", outside its objects (bytes " + std::to_string(kHeader) +
                   " to " + std::to_string(table) + ")";
    }
    return "the binary list does not parse (a binary list has no lines)";
}

// The first element no property list has, for XML that is well formed but not a list.
const xmlNode* strangeElement(const xmlNode* node) {
    static const std::set<std::string> known{"plist", "dict", "key",   "array", "string", "integer",
                                             "real",  "true", "false", "date",  "data"};
    for (; node; node = node->next) {
        if (node->type != XML_ELEMENT_NODE) continue;
        if (!known.count(reinterpret_cast<const char*>(node->name))) return node;
        if (const xmlNode* inside = strangeElement(node->children)) return inside;
    }
    return nullptr;
}

std::string xmlBreak(const plat::Bytes& bytes) {
    xmlParserCtxtPtr context = xmlNewParserCtxt();
    if (!context) return "the list does not parse";
    xmlDocPtr doc = xmlCtxtReadMemory(context, reinterpret_cast<const char*>(bytes.data()),
                                      static_cast<int>(bytes.size()), nullptr, nullptr,
                                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    std::string where;
    if (!doc) {
        const xmlError* error = xmlCtxtGetLastError(context);
        if (error) {
            std::string message = error->message ? error->message : "not well formed";
            while (!message.empty() && (message.back() == '\n' || message.back() == ' '))
                message.pop_back();
            where = "line " + std::to_string(error->line) + ", column " +
                    std::to_string(error->int2) + ": " + message;
        } else {
            where = "the XML does not parse";
        }
    } else {
        const xmlNode* strange = strangeElement(xmlDocGetRootElement(doc));
        where = strange ? "line " + std::to_string(xmlGetLineNo(strange)) + ": <" +
                              reinterpret_cast<const char*>(strange->name) +
                              "> is no part of a property list"
                        : "the XML is well formed but its values do not read as a property list";
        xmlFreeDoc(doc);
    }
    xmlFreeParserCtxt(context);
    return where;
}

}  // namespace

std::string plistBreak(const plat::Bytes& bytes) {
    if (bytes.size() >= 6 && std::memcmp(bytes.data(), "bplist", 6) == 0) return binaryBreak(bytes);
    if (bytes.size() > static_cast<std::size_t>(INT32_MAX)) return "the list is too large to read";
    return xmlBreak(bytes);
}

}  // namespace velto::app
