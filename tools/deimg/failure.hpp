/// Failures in words for people, and names that are safe to print.
#ifndef DEIMG_TOOLS_DEIMG_FAILURE_HPP
#define DEIMG_TOOLS_DEIMG_FAILURE_HPP

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace deimg::cli {

/// One file could not be handled: what was being done, what is wrong, and the result code.
class Failure : public std::runtime_error {
 public:
  /// `doing` reads after "while", for example "developing".
  Failure(std::string doing, const std::string& wrong, uint32_t code)
      : std::runtime_error(wrong), doing_(std::move(doing)), code_(code) {}
  /// A failed system call; `number` is its errno.
  static Failure System(std::string doing, int number);

  const std::string& doing() const noexcept { return doing_; }
  uint32_t code() const noexcept { return code_; }
  /// "while DOING: WRONG (code N)".
  std::string Sentence() const;

 private:
  std::string doing_;
  uint32_t code_;
};

/// The command line asks for something that cannot be done.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// "code 2", "code 0x0400002C" or "system error 28".
std::string CodeName(uint32_t code);

/// A file name for messages: bytes that are control characters or not UTF-8 as \xNN, and "-" as
/// `standard`.
std::string Printable(std::string_view name, std::string_view standard);
std::string PrintableInput(std::string_view name);
std::string PrintableOutput(std::string_view name);

/// Bytes at the front of `text` that are one well-formed UTF-8 character; 0 when there is none.
size_t Utf8CharacterBytes(std::string_view text);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_FAILURE_HPP
