/// A raw file's records for people and for programs.
#ifndef DEIMG_TOOLS_DEIMG_INFO_REPORT_HPP
#define DEIMG_TOOLS_DEIMG_INFO_REPORT_HPP

#include <string>

#include "json_text.hpp"
#include "raw_info.hpp"

namespace deimg::cli {

std::string InfoText(const std::string& file, const RawInfo& info);
Json InfoJson(const RawInfo& info);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_INFO_REPORT_HPP
