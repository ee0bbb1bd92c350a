#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>

#include "peers/settings_component/setting_file.h"

namespace app {

struct PreviewOptions {
  std::string printer = "*";
  std::string paper = "A4";
  bool isLandscape = false;
  std::filesystem::path picture;  ///< Its extension, svg, pdf or png, tells the kind.
};

/// Draws the page that a printer's watermarks make on empty paper, and tells what there is to know
/// of it. A picture that is there already is replaced as a whole. UsageError for options that will
/// not do and for a printer that is none or prints without watermarks.
void Preview(std::ostream& out, const peers::SettingFileContent& content,
             const PreviewOptions& options);

}  // namespace app
