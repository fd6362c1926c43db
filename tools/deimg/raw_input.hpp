/// The raw file to work on: a name, or "-" for standard input.
#ifndef DEIMG_TOOLS_DEIMG_RAW_INPUT_HPP
#define DEIMG_TOOLS_DEIMG_RAW_INPUT_HPP

#include <deimg/streams.hpp>
#include <memory>
#include <string>

namespace deimg::cli {

/// Opens a raw file. What cannot be positioned (standard input, a pipe) is read into memory first.
/// Throws Failure.
std::unique_ptr<host::Input> OpenRaw(const std::string& name);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_RAW_INPUT_HPP
