// Reads the section table of a TDF file straight from its layout: "TDF2",
// then sections of [u32 length incl. header][u32 version][u32 name length N]
// [N name bytes][data], little-endian. The container class finds a section by
// name; listing all of them needs this walk.
#ifndef DEVID_CLI_TDFSECTIONREADER_H
#define DEVID_CLI_TDFSECTIONREADER_H

#include "cli/DeviceViews.h"

#include <string>
#include <vector>

namespace devid_cli {

class TdfSectionReader {
public:
    /// Throws ToolError (File) when the file can't be read, lacks the ".tdf"
    /// extension the container insists on, or does not start with "TDF2".
    static void RequireTdf(const std::string& path);

    /// The sections in file order, up to the first damaged one; `damage`
    /// then says what is wrong with it ("" for an intact file).
    /// Throws like RequireTdf.
    static std::vector<TdfSectionView> List(const std::string& path, std::string& damage);

    /// The data bytes of one listed section; "" when they can't be read.
    static std::string ReadData(const std::string& path, const TdfSectionView& section);
};

} // namespace devid_cli

#endif
