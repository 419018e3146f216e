#include "platform/plist/json.h"

#include "platform/plist/property_list_text.h"

#include <nlohmann/json.hpp>

namespace drevix {
namespace {

using Json = nlohmann::ordered_json;

Json FromValue(const PropertyList &value);

struct Converter {
    Json operator()(bool value) const { return value; }
    Json operator()(std::int64_t value) const { return value; }
    Json operator()(std::uint64_t value) const { return value; }
    Json operator()(double value) const { return value; }
    Json operator()(const std::string &value) const { return value; }
    Json operator()(const PropertyListData &value) const {
        std::string text;
        AppendBase64Text(text, value.bytes);
        return text;
    }
    Json operator()(const PropertyListDate &value) const { return value.seconds; }
    Json operator()(const PropertyListArray &value) const {
        Json result = Json::array();
        for (const PropertyList &element : value) {
            result.push_back(FromValue(element));
        }
        return result;
    }
    Json operator()(const PropertyListDictionary &value) const {
        Json result = Json::object();
        for (const auto &[key, entry] : value.Entries()) {
            result[key] = FromValue(entry);
        }
        return result;
    }
};

Json FromValue(const PropertyList &value) {
    return std::visit(Converter(), value.Get());
}

} // namespace

std::string JsonText(const PropertyList &value) {
    return FromValue(value).dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace drevix
