#include "help_formatter.hpp"

#include <sstream>

namespace deimg::cli {
namespace {

constexpr size_t kColumns = 80;
constexpr size_t kDescriptionColumn = 28;  // of options and commands

}  // namespace

HelpFormatter::HelpFormatter() {
  column_width(kDescriptionColumn);
  label("SUBCOMMAND", "COMMAND");
}

std::string HelpFormatter::make_group(std::string group, bool isPositional,
                                      std::vector<const CLI::Option*> options) const {
  // Groups after the first are set off by one empty line instead of two.
  const bool first = isPositional || group == "Options";
  const std::string text =
      Formatter::make_group(std::move(group), isPositional, std::move(options));
  return first ? text : text.substr(1);
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  const std::string value = option->get_type_name();
  return value.empty() ? "" : " " + value;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
  return Wrapped(option->get_description(), kColumns - kDescriptionColumn);
}

std::string HelpFormatter::make_subcommand(const CLI::App* command) const {
  std::ostringstream out;
  CLI::detail::format_help(out, command->get_name(),
                           Wrapped(command->get_description(), kColumns - kDescriptionColumn),
                           kDescriptionColumn);
  return out.str();
}

std::string Wrapped(const std::string& text, size_t width) {
  std::istringstream words(text);
  std::string result;
  size_t column = 0;
  for (std::string word; words >> word; column += word.size()) {
    if (column + 1 + word.size() > width && column > 0) {
      result += '\n';
      column = 0;
    } else if (column > 0) {
      result += ' ';
      ++column;
    }
    result += word;
  }
  return result;
}

}  // namespace deimg::cli
