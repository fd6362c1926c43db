/// The commands of the program, one source file each.
#ifndef DEIMG_TOOLS_DEIMG_COMMANDS_HPP
#define DEIMG_TOOLS_DEIMG_COMMANDS_HPP

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace deimg::cli {

/// What the chosen command does once the whole command line is understood; returns the program's
/// exit status and may throw UsageError.
using Action = std::function<int()>;

/// Each adds one command to the program. When the user chooses it, `action` becomes what it does.
void AddDevelopCommand(CLI::App& program, Action& action);
void AddPreviewCommand(CLI::App& program, Action& action);
void AddThumbnailCommand(CLI::App& program, Action& action);
void AddInfoCommand(CLI::App& program, Action& action);
void AddCheckCommand(CLI::App& program, Action& action);
void AddVersionCommand(CLI::App& program, Action& action);
void AddHelpCommand(CLI::App& program, Action& action);

/// Adds a command that runs a `State`, which the command's options are to fill.
template <class State>
std::pair<CLI::App&, State&> AddCommand(CLI::App& program, Action& action, const char* name,
                                        const char* description) {
  CLI::App& command = *program.add_subcommand(name, description);
  const auto state = std::make_shared<State>();
  command.callback([state, &action] { action = [state] { return state->Run(); }; });
  return {command, *state};
}

/// The FILE arguments that most commands take.
void AddFiles(CLI::App& command, std::vector<std::string>& files);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_COMMANDS_HPP
