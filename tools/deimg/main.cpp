/// deimg: develops raw files into pictures.
#include <cstdio>
#include <exception>

#include "batch.hpp"
#include "commands.hpp"
#include "failure.hpp"
#include "help_formatter.hpp"
#include "interrupt.hpp"
#include "picture_writer.hpp"

namespace deimg::cli {
namespace {

/// The command line as UTF-8 or any other bytes. The parser gives words in brackets and a few
/// others a meaning of its own; as file names they keep theirs behind a "./".
std::vector<std::string> Words(int argc, char** argv) {
  std::vector<std::string> words;
  for (int i = argc - 1; i > 0; --i) {
    std::string word = argv[i];
    if (!word.empty() && (word[0] == '[' || word[0] == '{' || word[0] == '%')) {
      word.insert(0, "./");
    }
    words.push_back(word);
  }
  return words;  // last word first, as the parser wants them
}

int Fail(const std::string& message, const std::string& command) {
  std::fprintf(stderr, "deimg: %s\nTry 'deimg %s%s--help'.\n", message.c_str(), command.c_str(),
               command.empty() ? "" : " ");
  return kUsage;
}

int Run(int argc, char** argv) {
  CLI::App program("Develops the raw files of one camera model into RGB pictures.", "deimg");
  program.formatter(std::make_shared<HelpFormatter>());
  program.set_version_flag("--version", SoftwareName(), "Print the version and exit");
  program.set_help_flag("-h,--help", "Print this help and exit");
  program.require_subcommand(1);
  program.footer("'deimg help COMMAND' tells more; 'deimg help codes' explains result codes.");
  Action action;
  for (const auto add : {AddDevelopCommand, AddPreviewCommand, AddThumbnailCommand, AddInfoCommand,
                         AddCheckCommand, AddVersionCommand, AddHelpCommand}) {
    add(program, action);
  }
  for (CLI::App* const command : program.get_subcommands({})) command->group("Commands");

  const auto chosen = [&] {
    const auto commands = program.get_subcommands();
    return commands.empty() ? std::string() : commands.front()->get_name();
  };
  try {
    program.parse(Words(argc, argv));
    return action();
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return program.exit(error);
    if (chosen().empty() && argc > 1) {
      return Fail("there is no command '" + Printable(argv[1], "-") + "'", "");
    }
    return Fail(error.what(), chosen());
  } catch (const UsageError& error) {
    return Fail(error.what(), chosen());
  }
}

}  // namespace

void AddFiles(CLI::App& command, std::vector<std::string>& files) {
  command.add_option("FILE", files, "Raw files; - is standard input")->required()->type_name("");
}

}  // namespace deimg::cli

int main(int argc, char** argv) {
  deimg::cli::CatchInterrupts();
  try {
    const int status = deimg::cli::Run(argc, argv);
    deimg::cli::FinishInterrupt();
    return status;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "deimg: %s\n", error.what());
    return deimg::cli::kAllFailed;
  }
}
