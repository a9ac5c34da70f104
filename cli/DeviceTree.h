// A flattened device tree held in memory and read through libfdt: the
// compiled form (.dtb, or the live /sys/firmware/fdt), or a .dts source that
// dtc compiles first.
#ifndef DEVID_CLI_DEVICETREE_H
#define DEVID_CLI_DEVICETREE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace devid_cli {

class DeviceTree {
public:
    /// Reads `path`; a name ending in ".dts" is compiled with dtc first. On
    /// failure (unreadable file, dtc missing or failing, not a valid tree)
    /// returns an empty tree and puts the reason into `error`.
    static DeviceTree Load(const std::string& path, std::string& error);

    bool empty() const { return m_blob.empty(); }

    /// Node offsets in document order, the root first.
    std::vector<int> Nodes() const;
    std::vector<int> Children(int node) const;
    /// The child of that name (unit address included), or -1.
    int Child(int node, const char* name) const;
    /// -1 for the root and for a bad offset.
    int Parent(int node) const;
    /// "etm@22040000"; "" for the root.
    std::string Name(int node) const;
    std::string Path(int node) const;

    /// Every string of a string-list property; empty when absent.
    std::vector<std::string> Strings(int node, const char* property) const;
    /// The first cell of a property, when it has one.
    std::optional<uint32_t> Cell(int node, const char* property) const;
    /// The node a phandle names, or -1.
    int ByPhandle(uint32_t phandle) const;
    /// The node's own phandle, 0 when it has none.
    uint32_t Phandle(int node) const;

private:
    std::vector<char> m_blob;
};

} // namespace devid_cli

#endif
