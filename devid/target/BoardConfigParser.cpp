// Reading the board configuration file: which emulator driver and port the
// debug session uses.
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "common/source/source_utilities/uFile.h"

#include <cstdio>
#include <cstring>
#include <memory>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

const int kLineSize = 16384;
const std::size_t kValueSize = 32;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool EndsValue(char c)
{
    return c == '.' || IsBlank(c) || c == '\n' || c == '\r' || c == '\0';
}

// Reads the "com_..." keys of one section line into the record.
void ParseKeyLine(const char* line, BoardConfig& board)
{
    const char* p = line;
    for (;;) {
        while (IsBlank(*p))
            ++p;
        if (std::strncmp(p, "com_", 4) != 0)
            return;
        const bool isDriver = std::strncmp(p, "com_drv", 7) == 0;
        const bool isPort = std::strncmp(p, "com_por", 7) == 0;
        const char* equals = std::strchr(p, '=');
        if (equals == nullptr)
            return;
        p = equals + 1;
        if (IsBlank(*p))
            ++p;

        // Overlong values keep their first 31 characters; scanning still
        // resumes at the character that ends the whole value.
        char value[kValueSize] = {};
        std::size_t length = 0;
        for (; !EndsValue(*p); ++p) {
            if (length + 1 < kValueSize)
                value[length++] = *p;
        }

        if (isDriver) {
            DevIdLog(1, "DevId: EMU name %s", value);
            board.emulatorName = value;
        } else if (isPort) {
            DevIdLog(1, "DevId: EMU port %s", value);
            board.emulatorPort = value;
        }
    }
}

} // namespace

BoardConfig* CDeviceIdentifierImpl::ParseBoardConfigFile(const char* path)
{
    if (path == nullptr || *path == '\0')
        return nullptr;
    std::unique_ptr<FILE, decltype(&std::fclose)> file(MORA_LUX::uFile::OpenRegularFile(path, "r"), &std::fclose);
    if (!file)
        return nullptr;

    auto board = std::make_unique<BoardConfig>();
    std::unique_ptr<char[]> line(new char[kLineSize]);

    // The first line is the file's own header and never holds settings.
    if (std::fgets(line.get(), kLineSize, file.get()) != nullptr) {
        bool inSection = false;
        while (std::fgets(line.get(), kLineSize, file.get()) != nullptr) {
            if (!inSection) {
                inSection = line[0] == '$' && line[1] == ' ';
                continue;
            }
            // A "$" line only closes; the next section needs its own "$ " line.
            if (line[0] == '$') {
                inSection = false;
                continue;
            }
            ParseKeyLine(line.get(), *board);
        }
    }

    if (board->emulatorName.empty())
        board->emulatorName = "kmr770";
    return board.release();
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
