// The session configuration text: six "KEY=value" lines naming the emulator,
// the device IDs, the devices on the scan chain, the trace output files and
// the trace IDs. Written by SaveConfiguration, read back by the loads.
#include "devid/CDeviceIdentifierImpl.h"

#include "devid/DevIdLog.h"
#include "devid/NumberText.h"
#include "common/source/source_utilities/uString.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

// The reader's line buffer: a line fits with its newline and terminator, so the
// longest line either side accepts has 16383 characters before its newline.
constexpr std::size_t kLineBufferSize = 16384;
constexpr std::size_t kLongestLine = kLineBufferSize - 1;
// Field and item separators of the list lines; also cut a value's line end.
constexpr char kSeparators[] = "$~\r\n";

// A name survives the text only when it is non-empty and free of separators,
// since the reader drops empty fields and has no escaping.
bool IsWritableName(const std::string& name)
{
    return !name.empty() && name.find_first_of(kSeparators) == std::string::npos;
}

// A single-line value (EMU, PORT) may be empty but must not end its line early.
bool IsWritableValue(const std::string& value)
{
    return value.find_first_of("\r\n") == std::string::npos;
}

void AppendHex(std::string& text, uint32_t value)
{
    char number[16];
    std::snprintf(number, sizeof number, "0x%x", static_cast<unsigned>(value));
    text += number;
}

// strtok over "$~\r\n" without its hidden state, so a client's own strtok
// loop is left undisturbed: runs of separators count as one.
class TokenReader {
public:
    explicit TokenReader(const std::string& text) : m_text(text) {}

    bool Next(std::string& token)
    {
        const std::size_t start = m_text.find_first_not_of(kSeparators, m_position);
        if (start == std::string::npos) {
            m_position = m_text.size();
            return false;
        }
        std::size_t end = m_text.find_first_of(kSeparators, start);
        if (end == std::string::npos)
            end = m_text.size();
        token.assign(m_text, start, end - start);
        m_position = end;
        return true;
    }

private:
    const std::string& m_text;
    std::size_t m_position = 0;
};

enum class LineResult { End, Line, TooLong };

// One line as fgets with a 16384-byte buffer would deliver it, newline kept.
// A line that does not fit is reported as TooLong with its first part in
// `line` and its rest consumed, instead of coming back as a second line.
LineResult ReadLine(FILE* file, std::string& line)
{
    line.clear();
    int c = std::getc(file);
    if (c == EOF)
        return LineResult::End;
    for (; c != EOF; c = std::getc(file)) {
        if (line.size() == kLongestLine && c != '\n') {
            while (c != '\n' && c != EOF)
                c = std::getc(file);
            return LineResult::TooLong;
        }
        line.push_back(static_cast<char>(c));
        if (c == '\n')
            break;
    }
    return LineResult::Line;
}

} // namespace

bool CDeviceIdentifierImpl::ComposeConfiguration(std::string& text)
{
    std::string composed;
    const std::string emulator = m_board ? m_board->emulatorName : "kmr770";
    const std::string port = m_board ? m_board->emulatorPort : "0";
    if (!IsWritableValue(emulator) || !IsWritableValue(port))
        return false;
    composed += "EMU=" + emulator + "\n";
    composed += "PORT=" + port + "\n";

    composed += "DEVICEID=";
    for (std::size_t i = 0; i < m_deviceIds.size(); ++i) {
        if (i > 0)
            composed += ",";
        AppendHex(composed, m_deviceIds[i]);
    }
    composed += "\n";

    composed += "DEVINFO=";
    // By index and by copy: GetOutFileName is virtual and may be overridden.
    for (std::size_t i = 0; i < m_connections.size(); ++i) {
        const DeviceConnectionInfo record = m_connections[i];
        if (!IsWritableName(record.name) || !IsWritableName(record.parentName))
            return false;
        AppendHex(composed, record.deviceType);
        composed += "$" + record.name + "$" + record.parentName + "~";
        // Asked only so that every device has its output file in the map below.
        GetOutFileName(record.name);
    }
    composed += "\n";

    composed += "OUTFILES=";
    for (const auto& entry : m_outFiles) {
        if (!IsWritableName(entry.first) || !IsWritableName(entry.second))
            return false;
        composed += entry.first + "$" + entry.second + "~";
    }
    composed += "\n";

    composed += "TRACEID=";
    for (const DeviceConnectionInfo& record : m_connections) {
        if (record.traceId == 0)
            continue;
        AppendHex(composed, record.traceId);
        composed += "$" + record.name + "~";
    }
    composed += "\n";

    // A text the reader would refuse must not replace a good saved session.
    for (std::size_t start = 0; start < composed.size();) {
        const std::size_t end = composed.find('\n', start);
        if (end - start > kLongestLine)
            return false;
        start = end + 1;
    }

    text = std::move(composed);
    return true;
}

bool CDeviceIdentifierImpl::LoadConfigurationDCMFile(FILE* file)
{
    if (file == nullptr) {
        DevIdLog(16, "DevId: Cannot open DCM file to load configuration.");
        return false;
    }
    m_configLoaded = true;
    if (!m_board)
        m_board = std::make_unique<BoardConfig>();

    std::string line;
    for (LineResult result = ReadLine(file, line); result != LineResult::End; result = ReadLine(file, line)) {
        // What follows a NUL byte is invisible to C string handling; so it is here.
        line.resize(std::strlen(line.c_str()));
        if (line.empty() || line[0] == ' ' || line[0] == '#' || line[0] == '\n')
            continue;
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos)
            continue;
        const std::string key = line.substr(0, equals);
        const std::size_t valueEnd = line.find_first_of("\r\n", equals + 1);
        if (valueEnd == std::string::npos && result == LineResult::TooLong) {
            DevIdLog(16, "DevId: exceeded maximum line size.");
            return false;
        }
        const std::string value =
            line.substr(equals + 1, valueEnd == std::string::npos ? std::string::npos : valueEnd - equals - 1);

        if (key == "EMU") {
            m_board->emulatorName = value;
        } else if (key == "PORT") {
            m_board->emulatorPort = value;
        } else if (key == "DEVICEID") {
            // Every piece adds the first ID: saved texts hold one ID and are
            // read back exactly; longer lists load the way they always have.
            std::vector<std::string> pieces;
            MORA_LUX::uString::Split(pieces, value.c_str(), ",");
            const uint32_t id = ParseUnsigned32(value.c_str(), 16);
            m_deviceIds.insert(m_deviceIds.end(), pieces.size(), id);
        } else if (key == "DEVINFO") {
            TokenReader tokens(value);
            std::string token;
            while (tokens.Next(token)) {
                DeviceConnectionInfo record;
                record.deviceType = ParseUnsigned32(token.c_str(), 16);
                record.traceId = 0;
                if (tokens.Next(token)) {
                    record.name = token;
                    if (tokens.Next(token))
                        record.parentName = token;
                }
                m_connections.push_back(record);
            }
        } else if (key == "OUTFILES") {
            TokenReader tokens(value);
            std::string processor;
            std::string outFile;
            while (tokens.Next(processor) && tokens.Next(outFile))
                m_outFiles[processor] = outFile;
        } else if (key == "TRACEID") {
            TokenReader tokens(value);
            std::string idText;
            std::string name;
            while (tokens.Next(idText) && tokens.Next(name)) {
                const uint32_t traceId = ParseUnsigned32(idText.c_str(), 16);
                for (DeviceConnectionInfo& record : m_connections) {
                    if (record.name == name)
                        record.traceId = traceId;
                }
            }
        }
    }
    return true;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
