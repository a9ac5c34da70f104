#include "tdf/TDFHandler.h"

#include "devid/target/HexkitError.h"
#include "common/source/source_utilities/uFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

using Hexkit::HexkitError;
using Hexkit::HexkitErrorIF;

constexpr uint32_t kIdentifier = 0x32464454; // "TDF2" read as a little-endian word
constexpr uint32_t kHeaderFixedSize = 12;    // length, version, name length
constexpr uint32_t kMaxNameLength = 4095;
constexpr const char* kExtension = "tdf";
constexpr const char* kNotLocated = " section cannot be located in the file.";

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
// Closing happens during unwinding, so every throw below leaves the file closed.
using File = std::unique_ptr<FILE, FileCloser>;

// Only regular files, opened without waiting: a FIFO named like a trace file
// must not stall the caller.
File Open(const char* fileName, const char* mode)
{
    return File(MORA_LUX::uFile::OpenRegularFile(fileName, mode));
}

[[noreturn]] void Fail(const std::string& message)
{
    throw HexkitError(message, HexkitErrorIF::SEVERITY_ERROR);
}

uint32_t Decode(const unsigned char* bytes)
{
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

// The file format is little-endian whatever the host is.
bool WriteWord(FILE* stream, uint32_t value)
{
    const unsigned char bytes[4] = {static_cast<unsigned char>(value),
                                    static_cast<unsigned char>(value >> 8),
                                    static_cast<unsigned char>(value >> 16),
                                    static_cast<unsigned char>(value >> 24)};
    return std::fwrite(bytes, 1, sizeof bytes, stream) == sizeof bytes;
}

// Missing bytes read as zero, so a short file never matches the identifier.
uint32_t ReadWord(FILE* stream)
{
    unsigned char bytes[4] = {0, 0, 0, 0};
    if (std::fread(bytes, 1, sizeof bytes, stream) == 0)
        return 0;
    return Decode(bytes);
}

// off_t is 64-bit on every host here (large-file build), so offsets past 2 GiB
// work on a 32-bit host as well.
bool Seek(FILE* stream, uint64_t offset)
{
    return offset <= static_cast<uint64_t>(std::numeric_limits<off_t>::max()) &&
           fseeko(stream, static_cast<off_t>(offset), SEEK_SET) == 0;
}

// Reads a stream forward through a large window of its own, so a walk over many
// small sections costs a few big reads instead of several stdio calls per section
// (fseek alone is a system call each time, even when the target is buffered).
class ForwardReader {
public:
    ForwardReader(FILE* stream, uint64_t position)
        : m_stream(stream), m_windowStart(position), m_window(kWindowSize)
    {
    }

    /// The bytes [offset, offset + count) of the file, or null when the file ends first.
    /// count must not exceed the window.
    const unsigned char* At(uint64_t offset, size_t count)
    {
        for (;;) {
            // The stream always stands at the end of the window.
            const uint64_t windowEnd = m_windowStart + m_windowLength;
            if (offset >= m_windowStart && offset + count <= windowEnd)
                return m_window.data() + (offset - m_windowStart);
            if (offset < m_windowStart || offset >= windowEnd + m_window.size()) {
                if (!Seek(m_stream, offset))
                    return nullptr;
                m_windowStart = offset;
                m_windowLength = 0;
            } else if (offset >= windowEnd) {
                // A short gap is cheaper to read through than to seek over.
                m_windowStart = windowEnd;
                m_windowLength = 0;
            } else {
                const size_t kept = static_cast<size_t>(windowEnd - offset);
                std::memmove(m_window.data(), m_window.data() + (offset - m_windowStart), kept);
                m_windowStart = offset;
                m_windowLength = kept;
            }
            const size_t got = std::fread(m_window.data() + m_windowLength, 1,
                                          m_window.size() - m_windowLength, m_stream);
            if (got == 0)
                return nullptr;
            m_windowLength += got;
        }
    }

private:
    static constexpr size_t kWindowSize = 64 * 1024;
    FILE* m_stream;
    uint64_t m_windowStart;
    size_t m_windowLength = 0;
    std::vector<unsigned char> m_window;
};

uint32_t Position(FILE* stream)
{
    return static_cast<uint32_t>(ftello(stream));
}

File OpenForLoad(const char* fileName)
{
    File file = Open(fileName, "rb");
    if (!file)
        Fail("Could not open TDF file as specified.");
    if (ReadWord(file.get()) != kIdentifier)
        Fail("Invalid TDF format.");
    return file;
}

std::string NameOrEmpty(const char* name)
{
    return name ? name : "";
}

// ASCII only, whatever locale the host process has set.
char FoldCase(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

void TDFHandler::CreateTDFFile(const char* fileName)
{
    if (!fileName)
        Fail("Null file name to create TDF.");
    if (!HasExtension(fileName, kExtension))
        Fail("TDF file extension must be .tdf.");
    File file = Open(fileName, "wb");
    if (!file)
        Fail("Could not create TDF file as specified.");
    if (!WriteWord(file.get(), kIdentifier) || std::fflush(file.get()) != 0)
        Fail("Write error -  TDF file identifier.");
}

bool TDFHandler::ISTDF(const char* fileName)
{
    if (!fileName || !HasExtension(fileName, kExtension))
        return false;
    File file = Open(fileName, "rb");
    return file && ReadWord(file.get()) == kIdentifier;
}

void TDFHandler::SaveSectionHeader(const char* fileName, const char* sectionName,
                                   uint32_t version, uint32_t& sectionOffset)
{
    sectionOffset = 0;
    if (!IsFileAvailable(fileName))
        Fail("File name passed to save file is not valid.");
    // A section no reader can walk past would hide every section saved after it.
    if (sectionName != nullptr && std::strlen(sectionName) > kMaxNameLength)
        Fail("TDF section name longer than 4095 bytes.");
    File file = Open(fileName, "r+b");
    if (!file)
        Fail("Could not open TDF file as specified.");

    const uint32_t start = FileSize(fileName);
    sectionOffset = start;
    // The length word stays 0 until the whole header is on disk.
    if (!Seek(file.get(), start) || !WriteWord(file.get(), 0))
        Fail("Write error -  TDF section header size.");
    if (!SaveNameVersion(file.get(), sectionName, version))
        Fail("Write error -  TDF section name and version.");

    const uint32_t headerLength = Position(file.get()) - start;
    if (!Seek(file.get(), start) || !WriteWord(file.get(), headerLength) ||
        std::fflush(file.get()) != 0)
        Fail("Write error - size of TDF header.");
}

void TDFHandler::SaveSectionData(const char* fileName, const char* /*sectionName*/,
                                 uint32_t sectionOffset, const void* data, size_t elementSize,
                                 size_t elementCount, uint32_t& sectionLength)
{
    sectionLength = 0;
    if (!IsFileAvailable(fileName))
        Fail("File name passed to save file is not valid.");
    if (sectionOffset < sizeof kIdentifier)
        Fail("Section header offset to save data is not valid.");
    if (!data)
        Fail("No data to write TDF.");
    File file = Open(fileName, "r+b");
    if (!file)
        Fail("Could not open TDF file as specified.");

    unsigned char word[4];
    if (!Seek(file.get(), sectionOffset) || std::fread(word, 1, sizeof word, file.get()) != sizeof word)
        Fail("Write I/O error - unable to determine section length.");
    const uint32_t headerLength = Decode(word);

    if (!Seek(file.get(), static_cast<uint64_t>(sectionOffset) + headerLength) ||
        std::fwrite(data, elementSize, elementCount, file.get()) != elementCount)
        Fail("Write I/O error - unable to write section data.");
    // A full disk shows only when the buffer goes out, so flush before judging the data.
    if (std::fflush(file.get()) != 0 || std::ferror(file.get()))
        Fail("Write error - section data corrupted.");

    const uint32_t length = Position(file.get()) - sectionOffset;
    if (!Seek(file.get(), sectionOffset) || !WriteWord(file.get(), length) ||
        std::fflush(file.get()) != 0)
        Fail("Write error - size of TDF header.");
    sectionLength = length;
}

void TDFHandler::GetSectionDataLengthInBytes(const char* fileName, const char* sectionName,
                                             uint32_t version, uint32_t& length)
{
    length = 0;
    if (!IsFileAvailable(fileName))
        Fail("File name passed to load file is not valid.");
    File file = OpenForLoad(fileName);
    if (!SeekSectionData(file.get(), sectionName, version, length))
        Fail("Section size cannot be located in the file.");
}

void TDFHandler::GetSectionDataPosition(const char* fileName, const char* sectionName,
                                        uint32_t version, uint32_t& position, uint32_t& length)
{
    if (!IsFileAvailable(fileName))
        Fail("File name passed to load is not valid.");
    if (!HasExtension(fileName, kExtension))
        Fail("TDF file extension must be .tdf.");
    File file = OpenForLoad(fileName);
    if (!SeekSectionData(file.get(), sectionName, version, length))
        Fail(NameOrEmpty(sectionName) + kNotLocated);
    position = Position(file.get());
}

void TDFHandler::LoadSectionData(const char* fileName, const char* sectionName, uint32_t version,
                                 void* buffer, uint32_t bufferSize, uint32_t& bytesRead)
{
    bytesRead = 0;
    if (!IsFileAvailable(fileName))
        Fail("File name passed to load is not valid.");
    if (!HasExtension(fileName, kExtension))
        Fail("TDF file extension must be .tdf.");
    if (!buffer || bufferSize == 0)
        Fail("No buffer allocated to load section data.");
    File file = OpenForLoad(fileName);
    uint32_t length = 0;
    if (!SeekSectionData(file.get(), sectionName, version, length))
        Fail(NameOrEmpty(sectionName) + kNotLocated);

    const size_t count = std::fread(buffer, 1, std::min(bufferSize, length), file.get());
    if (std::ferror(file.get()))
        Fail("Read I/O error - section data corrupted.");
    file.reset();
    bytesRead = static_cast<uint32_t>(count);
}

bool TDFHandler::SeekSectionData(FILE* stream, const char* sectionName, uint32_t version,
                                 uint32_t& length)
{
    if (!stream)
        return false;
    length = 0;
    const off_t startPosition = ftello(stream);
    struct stat info;
    if (startPosition < 0 || fstat(fileno(stream), &info) != 0)
        return false;

    // A null name looks for the sections that were saved without one.
    const char* wanted = sectionName ? sectionName : "";
    const size_t wantedLength = std::strlen(wanted);
    const uint64_t fileSize = static_cast<uint64_t>(info.st_size);
    uint64_t start = static_cast<uint64_t>(startPosition);
    ForwardReader reader(stream, start);

    for (;;) {
        const unsigned char* header = reader.At(start, kHeaderFixedSize);
        if (!header)
            return false;
        const uint32_t sectionLength = Decode(header);
        const uint32_t sectionVersion = Decode(header + 4);
        const uint32_t nameLength = Decode(header + 8);
        if (nameLength > kMaxNameLength)
            return false;
        // A length word that can't hold its own header, or that points past the end, would
        // make the walk revisit a section or read beyond the file: treat it as the end.
        const uint64_t end = start + sectionLength;
        if (sectionLength < kHeaderFixedSize + nameLength || end > fileSize)
            return false;

        if (nameLength == wantedLength && sectionVersion == version) {
            const uint64_t nameStart = start + kHeaderFixedSize;
            const unsigned char* name = reader.At(nameStart, nameLength);
            if (!name)
                return false;
            if (std::memcmp(name, wanted, nameLength) == 0) {
                const uint64_t dataStart = nameStart + nameLength;
                if (!Seek(stream, dataStart))
                    return false;
                length = static_cast<uint32_t>(end - dataStart);
                return true;
            }
        }
        start = end;
    }
}

bool TDFHandler::SaveNameVersion(FILE* stream, const char* sectionName, uint32_t version)
{
    if (!stream)
        return false;
    const size_t nameLength = sectionName ? std::strlen(sectionName) : 0;
    return WriteWord(stream, version) && WriteWord(stream, static_cast<uint32_t>(nameLength)) &&
           std::fwrite(sectionName ? sectionName : "", 1, nameLength, stream) == nameLength;
}

bool TDFHandler::IsFileAvailable(const char* fileName)
{
    if (!fileName || *fileName == '\0')
        return false;
    return Open(fileName, "rb") != nullptr;
}

bool TDFHandler::HasExtension(const char* fileName, const char* extension)
{
    if (!fileName || !extension)
        return false;
    const size_t nameLength = std::strlen(fileName);
    const size_t extensionLength = std::strlen(extension);
    if (nameLength <= extensionLength)
        return false;
    const char* tail = fileName + nameLength - extensionLength;
    return tail[-1] == '.' &&
           std::equal(tail, tail + extensionLength, extension,
                      [](char a, char b) { return FoldCase(a) == FoldCase(b); });
}

uint32_t FileSize(const char* fileName)
{
    if (!fileName)
        return 0;
    File file = Open(fileName, "rb");
    if (!file || fseeko(file.get(), 0, SEEK_END) != 0)
        return 0;
    const off_t end = ftello(file.get());
    return end < 0 ? 0 : static_cast<uint32_t>(end);
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
