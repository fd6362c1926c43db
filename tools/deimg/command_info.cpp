#include <cstdio>

#include "batch.hpp"
#include "commands.hpp"
#include "failure.hpp"
#include "info_report.hpp"
#include "interrupt.hpp"
#include "raw_input.hpp"

namespace deimg::cli {
namespace {

struct InfoCommand {
  std::vector<std::string> files;
  bool json = false;

  int Run() const {
    Json list = Json::array();
    size_t failed = 0;
    for (const std::string& file : files) {
      if (CancelFlag()) break;
      Json object = Json::object();
      AddName(object, "file", file);
      try {
        const std::unique_ptr<host::Input> raw = OpenRaw(file);
        const RawInfo info = ReadRawInfo(*raw);
        if (!json) std::fputs(InfoText(file, info).c_str(), stdout);
        object.update(InfoJson(info));
      } catch (const Failure& failure) {
        ++failed;
        std::fprintf(stderr, "deimg: %s: %s\n", PrintableInput(file).c_str(),
                     failure.Sentence().c_str());
        object["error"] = {
            {"doing", failure.doing()}, {"message", failure.what()}, {"code", failure.code()}};
      }
      list.push_back(object);
    }
    if (json) std::printf("%s\n", JsonText(list, 2).c_str());
    if (std::fflush(stdout) != 0) {
      std::perror("deimg: standard output");
      return kAllFailed;
    }
    return StatusOf(failed, files.size());
  }
};

}  // namespace

void AddInfoCommand(CLI::App& program, Action& action) {
  const auto [command, state] =
      AddCommand<InfoCommand>(program, action, "info", "Print what raw files record");
  AddFiles(command, state.files);
  command.add_flag("--json", state.json, "One JSON array with an object for every file");
  command.footer(
      "Examples:\n"
      "  deimg info photo.raw\n"
      "  deimg info --json *.raw | jq '.[] | {file, sensitivity}'");
}

}  // namespace deimg::cli
