#include <cstdio>
#include <deimg/streams.hpp>
#include <memory>

#include "batch.hpp"
#include "commands.hpp"
#include "failure.hpp"
#include "help_formatter.hpp"
#include "picture_writer.hpp"

namespace deimg::cli {
namespace {

constexpr size_t kTextColumns = 62;

void PrintRow(const std::string& name, const std::string& text) {
  std::string lines = Wrapped(text, kTextColumns);
  for (size_t at = 0; (at = lines.find('\n', at)) != std::string::npos; at += 19) {
    lines.insert(at + 1, 18, ' ');
  }
  std::printf("  %-15s %s\n", name.c_str(), lines.c_str());
}

void PrintCodes() {
  std::puts("Result codes, as messages and --progress json give them:\n");
  for (const host::CodeMeaning& meaning : host::kCodeMeanings) {
    PrintRow(CodeName(meaning.code).substr(std::string("code ").size()), meaning.text);
  }
  PrintRow("0x7D010000 + N", "error N of the operating system (shown as system error N)");
  std::puts("\nExit statuses of this program:\n");
  PrintRow("0", "all went well");
  PrintRow("1", "the command line is wrong; nothing was done");
  PrintRow("2", "some of the files failed");
  PrintRow("3", "all of the files failed");
  std::puts("\nStopped by a signal (Ctrl-C), the program ends by that signal.");
}

int Help(CLI::App& program, const std::string& topic) {
  if (topic == "codes") {
    PrintCodes();
  } else if (topic.empty()) {
    std::fputs(program.help().c_str(), stdout);
  } else {
    const auto commands = program.get_subcommands(
        [&](const CLI::App* command) { return command->get_name() == topic; });
    if (commands.empty()) throw UsageError("there is no help on '" + topic + "'");
    std::fputs(commands.front()->help("deimg").c_str(), stdout);
  }
  return kAllWell;
}

}  // namespace

void AddVersionCommand(CLI::App& program, Action& action) {
  program.add_subcommand("version", "Print the version")->callback([&action] {
    action = [] {
      std::puts(SoftwareName().c_str());
      return int{kAllWell};
    };
  });
}

void AddHelpCommand(CLI::App& program, Action& action) {
  CLI::App& command = *program.add_subcommand("help", "Print help on a command, or on codes");
  const auto topic = std::make_shared<std::string>();
  command.add_option("TOPIC", *topic, "A command, or 'codes' for the result codes")->type_name("");
  command.callback(
      [topic, &program, &action] { action = [topic, &program] { return Help(program, *topic); }; });
}

}  // namespace deimg::cli
