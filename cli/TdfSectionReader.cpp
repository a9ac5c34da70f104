#include "cli/TdfSectionReader.h"

#include "cli/ToolError.h"
#include "tdf/TDFHandler.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace devid_cli {

namespace {

constexpr uint32_t kHeaderSize = 12;
// Readers keep names in a 4096-byte buffer with a terminator.
constexpr uint32_t kMaxNameLength = 4095;

bool ReadWord(std::istream& in, uint32_t& word)
{
    unsigned char bytes[4];
    if (!in.read(reinterpret_cast<char*>(bytes), sizeof bytes))
        return false;
    word = static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
    return true;
}

} // namespace

void TdfSectionReader::RequireTdf(const std::string& path)
{
    // A FIFO would make the read below wait for a writer.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored) || !std::ifstream(path, std::ios::binary))
        throw ToolError(ErrorKind::File, "cannot read " + path);
    Mora::Lux::Trace::TDFHandler tdf;
    if (!tdf.HasExtension(path.c_str(), "tdf"))
        throw ToolError(ErrorKind::File, path + ": a TDF file name must end in \".tdf\"");
    if (!tdf.ISTDF(path.c_str()))
        throw ToolError(ErrorKind::File, path + " is not a TDF file (it does not start with \"TDF2\")");
}

std::vector<TdfSectionView> TdfSectionReader::List(const std::string& path, std::string& damage)
{
    RequireTdf(path);
    damage.clear();
    std::ifstream in(path, std::ios::binary);
    in.seekg(0, std::ios::end);
    const std::streamoff fileSize = in.tellg();
    std::vector<TdfSectionView> sections;
    std::streamoff offset = 4;
    while (offset < fileSize) {
        const std::string where = "section at offset " + std::to_string(offset);
        in.seekg(offset);
        TdfSectionView section;
        section.offset = static_cast<uint32_t>(offset);
        uint32_t nameLength = 0;
        if (!ReadWord(in, section.length) || !ReadWord(in, section.version) || !ReadWord(in, nameLength)) {
            damage = where + ": the header is cut off by the end of the file";
            break;
        }
        if (nameLength > kMaxNameLength) {
            damage = where + ": a name of " + std::to_string(nameLength) + " bytes is longer than readers accept";
            break;
        }
        if (section.length < kHeaderSize + nameLength) {
            damage = where + ": its length word " + std::to_string(section.length) +
                     " is shorter than its header (a section left half-written?)";
            break;
        }
        if (offset + section.length > fileSize) {
            damage = where + ": its length " + std::to_string(section.length) + " runs past the end of the file";
            break;
        }
        section.name.resize(nameLength);
        if (nameLength > 0 && !in.read(&section.name[0], nameLength)) {
            damage = where + ": the name is cut off by the end of the file";
            break;
        }
        section.dataOffset = section.offset + kHeaderSize + nameLength;
        section.dataLength = section.length - kHeaderSize - nameLength;
        sections.push_back(std::move(section));
        offset += sections.back().length;
    }
    return sections;
}

std::string TdfSectionReader::ReadData(const std::string& path, const TdfSectionView& section)
{
    std::ifstream in(path, std::ios::binary);
    std::string data(section.dataLength, '\0');
    in.seekg(section.dataOffset);
    if (!in || (section.dataLength > 0 && !in.read(&data[0], section.dataLength)))
        return "";
    return data;
}

} // namespace devid_cli
