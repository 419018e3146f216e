#include "platform/json.h"

#include <nlohmann/json.hpp>

namespace drevix {
namespace {

using Json = nlohmann::ordered_json;

Json FromValue(const PropertyList &value);

struct Converter {
    Json operator()(bool value) const { return value; }
    Json operator()(std::int64_t value) const { return value; }
    Json operator()(double value) const { return value; }
    Json operator()(const std::string &value) const { return value; }
    Json operator()(const PropertyListData &value) const { return Base64(value.bytes); }
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

    // RFC 4648, section 4.
    static std::string Base64(const std::string &bytes) {
        constexpr std::string_view kDigits =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string text;
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            std::uint32_t group = 0;
            for (std::size_t j = 0; j < 3; ++j) {
                group = (group << 8) | (i + j < bytes.size() ? static_cast<std::uint8_t>(bytes[i + j]) : 0);
            }
            for (std::size_t j = 0; j < 4; ++j) {
                text.push_back(i + j <= bytes.size() ? kDigits[(group >> (18 - 6 * j)) & 63] : '=');
            }
        }
        return text;
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
