/// The picture formats, one row each: all that the program knows about a format besides its writer.
#ifndef DEIMG_TOOLS_DEIMG_PICTURE_FORMATS_HPP
#define DEIMG_TOOLS_DEIMG_PICTURE_FORMATS_HPP

#include <set>
#include <string>
#include <vector>

#include "picture_writer.hpp"

namespace deimg::cli {

enum class FormatTrait {
  kQuality,   ///< --quality means something to it
  kGoesBack,  ///< its writer goes back in its file
};

struct PictureFormat {
  std::string name;
  std::vector<std::string> extensions;  ///< of file names, the usual one first
  std::set<int> depths;                 ///< bits per sample
  std::set<FormatTrait> traits;
  WriterMaker* makeWriter;

  /// The name as it stands in sentences.
  std::string Title() const;
};

/// Every format, the default one first.
const std::vector<PictureFormat>& PictureFormats();

/// The format of this name or extension, in any case of letters; null when there is none.
const PictureFormat* FindFormat(const std::string& nameOrExtension);

}  // namespace deimg::cli

#endif  // DEIMG_TOOLS_DEIMG_PICTURE_FORMATS_HPP
