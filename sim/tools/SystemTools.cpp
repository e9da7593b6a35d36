#include "sim/tools/SystemTools.h"

#include <sysexits.h>

#include <filesystem>
#include <ostream>

#include "sim/tools/DsclTool.h"
#include "sim/tools/InstallerTool.h"
#include "sim/tools/PkgutilTool.h"

namespace halvo::sim {

int actAsSystemTool(std::string_view name, const std::vector<std::string>& arguments, std::string_view root,
                    const ToolStreams& streams) {
  const std::string tool = std::filesystem::path(name).filename();
  if (tool == "installer") {
    return runTool("/usr/sbin/installer", arguments, streams, [&] { return installerTool(arguments, root, streams); });
  }
  if (tool == "pkgutil") {
    return runTool("/usr/sbin/pkgutil", arguments, streams, [&] { return pkgutilTool(arguments, root, streams); });
  }
  if (tool == "dscl") {
    return runTool("/usr/bin/dscl", arguments, streams, [&] { return dsclTool(arguments, streams); });
  }
  streams.err << tool << ": this program acts by its name; call it as installer, pkgutil or dscl.\n";
  return EX_USAGE;
}

}  // namespace halvo::sim
