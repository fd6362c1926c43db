/// JSON that survives file names of any bytes.
#ifndef DEIMG_TOOLS_DEIMG_JSON_TEXT_HPP
#define DEIMG_TOOLS_DEIMG_JSON_TEXT_HPP

#include <nlohmann/json.hpp>
#include <string>

#include "failure.hpp"

namespace deimg::cli {

using Json = nlohmann::ordered_json;

/// The text of a value; bytes that are not UTF-8 become U+FFFD.
inline std::string JsonText(const Json& value, int indent = -1) {
  return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

/// Stores a file name under `key`; when it is not UTF-8, its bytes in hexadecimal go under
/// `key`Hex as well.
inline void AddName(Json& object, const std::string& key, const std::string& name) {
  object[key] = name;
  for (std::string_view rest = name; !rest.empty();) {
    const size_t length = Utf8CharacterBytes(rest);
    if (length == 0) {
      constexpr char kDigits[] = "0123456789abcdef";
      std::string hex;
      for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        hex += {kDigits[byte >> 4], kDigits[byte & 15]};
      }
      object[key + "Hex"] = hex;
      return;
    }
    rest.remove_prefix(length);
  }
}

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_JSON_TEXT_HPP
