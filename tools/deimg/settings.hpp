/// Development settings under the names that photographers use.
#ifndef DEIMG_TOOLS_DEIMG_SETTINGS_HPP
#define DEIMG_TOOLS_DEIMG_SETTINGS_HPP

#include <CLI/CLI.hpp>
#include <deimg/streams.hpp>

#include "raw_info.hpp"

namespace deimg::cli {

/// The settings of one command line; everything is as recorded unless an option says otherwise.
struct Settings {
  DevelopParams params = host::AsRecorded();

  /// Adds the options of the settings; without `full`, leaves out those that the quick jobs fix.
  void AddTo(CLI::App& command, bool full);
  /// Throws Failure when this picture has no place for the white-balance point.
  void RequireFits(const RawInfo& info) const;
};

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_SETTINGS_HPP
