// For scripts/compare_readers: reads frames from standard input, each a letter, a length of four bytes (little-endian) and
// so many bytes, and prints what was read, a line a reader. Letter 'p': a property list, by our reader and by libplist.
// 'x': an XML document, by ours. What is refused is "! " and why.
#include "platform/plist/property_list.h"
#include "platform/xml/xml_document.h"

#include <plist/plist.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <string>

namespace drevix {
namespace {

std::string Hex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

std::string Number(const char *kind, double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%s%.17g", kind, number);
    return text;
}

// Names sorted, the last of equal ones.
std::string Dictionary(const std::map<std::string, std::string> &entries) {
    std::string text = "{";
    for (const auto &[key, value] : entries) {
        text += Hex(key) + ":" + value + ",";
    }
    return text + "}";
}

std::string Shown(const PropertyList &list) {
    if (const auto *value = list.As<bool>()) {
        return *value ? "t" : "f";
    }
    if (const auto *value = list.As<std::int64_t>()) {
        return "i" + std::to_string(*value);
    }
    if (const auto *value = list.As<std::uint64_t>()) {
        return "i" + std::to_string(*value);
    }
    if (const auto *value = list.As<double>()) {
        return Number("r", *value);
    }
    if (const auto *value = list.As<std::string>()) {
        return "s" + Hex(*value);
    }
    if (const auto *value = list.As<PropertyListData>()) {
        return "b" + Hex(value->bytes);
    }
    if (const auto *value = list.As<PropertyListDate>()) {
        return Number("d", value->seconds);
    }
    if (const auto *value = list.As<PropertyListArray>()) {
        std::string text = "[";
        for (const PropertyList &element : *value) {
            text += Shown(element) + ",";
        }
        return text + "]";
    }
    std::map<std::string, std::string> entries;
    for (const auto &[key, value] : list.As<PropertyListDictionary>()->Entries()) {
        entries[key] = Shown(value);
    }
    return Dictionary(entries);
}

std::string ShownByPeer(plist_t node) {
    char *text = nullptr;
    std::uint64_t length = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0 ? "t" : "f";
    }
    case PLIST_UINT: {
        plist_get_uint_val(node, &length);
        return "i" + std::to_string(length);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return Number("r", value);
    }
    case PLIST_STRING: {
        plist_get_string_val(node, &text);
        const std::string shown = text == nullptr ? "?" : "s" + Hex(text);
        std::free(text);
        return shown;
    }
    case PLIST_DATA: {
        plist_get_data_val(node, &text, &length);
        const std::string shown = "b" + Hex({text, length});
        std::free(text);
        return shown;
    }
    case PLIST_DATE: {
        std::int32_t seconds = 0;
        std::int32_t micro = 0;
        plist_get_date_val(node, &seconds, &micro);
        return Number("d", seconds);
    }
    case PLIST_ARRAY: {
        std::string shown = "[";
        for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
            shown += ShownByPeer(plist_array_get_item(node, i)) + ",";
        }
        return shown + "]";
    }
    case PLIST_DICT: {
        std::map<std::string, std::string> entries;
        plist_dict_iter step = nullptr;
        plist_dict_new_iter(node, &step);
        for (;;) {
            plist_t value = nullptr;
            plist_dict_next_item(node, step, &text, &value);
            if (value == nullptr) {
                break;
            }
            entries[text] = ShownByPeer(value);
            std::free(text);
        }
        std::free(step);
        return Dictionary(entries);
    }
    default:
        return "?";
    }
}

void ShowList(const std::string &bytes) {
    PropertyList root(false);
    PropertyListProblem problem;
    const bool isRead = ParsePropertyList(std::as_bytes(std::span(bytes)), &root, &problem) == 0;
    std::cout << (isRead ? Shown(root) : "! " + problem.text) << std::endl; // the peer may end the program
    plist_t tree = nullptr;
    if (bytes.starts_with("bplist00")) {
        plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &tree);
    } else {
        plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &tree);
    }
    std::cout << (tree != nullptr ? ShownByPeer(tree) : "! ") << std::endl;
    plist_free(tree);
}

std::string Shown(const XmlNode &node) {
    if (!node.IsElement()) {
        return "'" + Hex(node.text);
    }
    std::map<std::string, std::string> attributes;
    for (const XmlAttribute &attribute : node.attributes) {
        attributes[attribute.name] = Hex(attribute.value);
    }
    std::string text = "<" + Hex(node.name) + Dictionary(attributes);
    for (const XmlNode &child : node.children) {
        text += Shown(child);
    }
    return text + ">";
}

void ShowDocument(const std::string &bytes) {
    XmlDocument document;
    const bool isRead = ParseXmlDocument(bytes, XmlReading::Strict, &document) == 0;
    std::cout << (isRead ? Shown(document.root) : "! ") << std::endl;
}

} // namespace
} // namespace drevix

int main() {
    char kind = 0;
    while (std::cin.get(kind)) {
        unsigned char head[4];
        std::cin.read(reinterpret_cast<char *>(head), sizeof head);
        std::uint32_t length = 0;
        std::memcpy(&length, head, sizeof length);
        std::string bytes(length, '\0');
        std::cin.read(bytes.data(), length);
        (kind == 'p' ? drevix::ShowList : drevix::ShowDocument)(bytes);
    }
}
