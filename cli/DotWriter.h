// Draws the trace topology as a Graphviz digraph for `dot -Tsvg`: sources,
// link modules, sinks and DRM modules as nodes, each route as a chain of edges.
#ifndef DEVID_CLI_DOTWRITER_H
#define DEVID_CLI_DOTWRITER_H

#include "cli/DeviceViews.h"

#include <ostream>
#include <string>
#include <vector>

namespace devid_cli {

class DotWriter {
public:
    /// Names that resolve to nothing are drawn dashed and red, so a broken
    /// description shows in the picture instead of vanishing from it.
    static void Write(std::ostream& out, const std::vector<RouteView>& routes);

    /// A DOT double-quoted string; quotes and backslashes are escaped and
    /// control characters replaced, so any name is safe as an ID or label.
    static std::string Quote(const std::string& text);
};

} // namespace devid_cli

#endif
