#include "cli/TdfCommands.h"

#include "cli/TdfSectionReader.h"
#include "cli/ToolError.h"
#include "devid/target/HexkitError.h"
#include "tdf/TDFHandler.h"

#include <vector>

namespace devid_cli {

void TdfCommands::List(const std::string& file, Formatter& formatter)
{
    std::string damage;
    const std::vector<TdfSectionView> sections = TdfSectionReader::List(file, damage);
    formatter.TdfSections(file, sections);
    if (!damage.empty())
        throw ToolError(ErrorKind::File, file + ": " + damage);
}

void TdfCommands::Cat(const std::string& file, const std::string& name, uint32_t version, std::ostream& out)
{
    TdfSectionReader::RequireTdf(file);
    Mora::Lux::Trace::TDFHandler tdf;
    try {
        uint32_t length = 0;
        tdf.GetSectionDataLengthInBytes(file.c_str(), name.c_str(), version, length);
        if (length == 0)
            return;
        std::vector<char> data(length);
        uint32_t read = 0;
        tdf.LoadSectionData(file.c_str(), name.c_str(), version, data.data(), length, read);
        out.write(data.data(), static_cast<std::streamsize>(read));
    } catch (const Mora::Lux::Hexkit::HexkitError& error) {
        throw ToolError(ErrorKind::File, file + ": no section \"" + name + "\" version " + std::to_string(version) +
                                             " (" + error.what() + ")");
    }
}

} // namespace devid_cli
