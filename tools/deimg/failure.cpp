#include "failure.hpp"

#include <cstdio>
#include <deimg/streams.hpp>

namespace deimg::cli {
namespace {

constexpr uint32_t kLargestDecimalCode = 0xFFFF;

std::string Hex(const char* format, unsigned value) {
  char text[16];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

}  // namespace

Failure Failure::System(std::string doing, int number) {
  const uint32_t code = host::SystemErrorCode(number);
  return {std::move(doing), host::CodeText(code), code};
}

std::string Failure::Sentence() const {
  return "while " + doing_ + ": " + what() + " (" + CodeName(code_) + ")";
}

std::string CodeName(uint32_t code) {
  if (code > host::kSystemError) return "system error " + std::to_string(code - host::kSystemError);
  if (code > kLargestDecimalCode) return "code " + Hex("0x%08X", code);
  return "code " + std::to_string(code);
}

size_t Utf8CharacterBytes(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  if (text.empty()) return 0;
  const unsigned char first = byte(0);
  if (first < 0x80) return 1;
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
  const bool outside = (first == 0xED && byte(1) > 0x9F) || (first == 0xF4 && byte(1) > 0x8F);
  return overlong || outside ? 0 : length;
}

std::string Printable(std::string_view name, std::string_view standard) {
  if (name == "-") return std::string(standard);
  std::string text;
  while (!name.empty()) {
    const auto byte = static_cast<unsigned char>(name.front());
    const size_t length = byte < 0x20 || byte == 0x7F ? 0 : Utf8CharacterBytes(name);
    if (length == 0) {
      text += Hex("\\x%02X", byte);
    } else {
      text += name.substr(0, length);
    }
    name.remove_prefix(length == 0 ? 1 : length);
  }
  return text;
}

std::string PrintableInput(std::string_view name) { return Printable(name, "standard input"); }
std::string PrintableOutput(std::string_view name) { return Printable(name, "standard output"); }

}  // namespace deimg::cli
