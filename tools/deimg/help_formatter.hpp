/// How the program's help looks.
#ifndef DEIMG_TOOLS_DEIMG_HELP_FORMATTER_HPP
#define DEIMG_TOOLS_DEIMG_HELP_FORMATTER_HPP

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace deimg::cli {

/// Descriptions wrapped to a terminal of 80 columns, and nothing beside an option but its value.
class HelpFormatter final : public CLI::Formatter {
 public:
  HelpFormatter();
  std::string make_group(std::string group, bool isPositional,
                         std::vector<const CLI::Option*> options) const override;
  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
  std::string make_subcommand(const CLI::App* command) const override;
};

/// `text` in lines of at most `width` columns.
std::string Wrapped(const std::string& text, size_t width);

/// "a, b or c": a word of every row of a table.
template <class Row, class Word>
std::string Choices(const std::vector<Row>& rows, Word word) {
  std::string text;
  for (size_t i = 0; i < rows.size(); ++i) {
    text += i == 0 ? "" : i + 1 < rows.size() ? ", " : " or ";
    text += std::invoke(word, rows[i]);
  }
  return text;
}

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_HELP_FORMATTER_HPP
