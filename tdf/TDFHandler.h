// Trace data file: a "TDF2" identifier followed by named, versioned sections,
// each a little-endian header (length, version, name length, name) and data.
#ifndef MORA_LUX_TRACE_TDFHANDLER_H
#define MORA_LUX_TRACE_TDFHANDLER_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace Mora {
namespace Lux {
namespace Trace {

/// Stateless: every operation opens the file by name and closes it again. Only regular
/// files open, without waiting: a FIFO, device or folder counts as a file that can't be opened.
/// Failures throw Hexkit::HexkitError with SEVERITY_ERROR; the file is closed first.
class TDFHandler {
public:
    TDFHandler() = default;
    ~TDFHandler() = default;

    /// Creates or truncates the file and writes the identifier.
    /// Throws on a null name, a name without ".tdf", or an open or write failure.
    void CreateTDFFile(const char* fileName);

    /// True for a ".tdf" name whose file starts with "TDF2". Never throws.
    bool ISTDF(const char* fileName);

    /// Appends a section header at the end of the file; its offset goes to sectionOffset
    /// (0 when the call throws for an unavailable file, a name over 4095 bytes or a failed write).
    void SaveSectionHeader(const char* fileName, const char* sectionName, uint32_t version,
                           uint32_t& sectionOffset);

    /// Writes the data behind the header at sectionOffset and fixes the section's length word,
    /// which also goes to sectionLength. The name is not used. Throws on a bad file, offset,
    /// data pointer or write; sectionLength stays 0 then.
    void SaveSectionData(const char* fileName, const char* sectionName, uint32_t sectionOffset,
                         const void* data, size_t elementSize, size_t elementCount,
                         uint32_t& sectionLength);

    /// Data length of the first section with this name and version. Does not check the
    /// extension. Throws when the file is unavailable, not a TDF or lacks the section.
    void GetSectionDataLengthInBytes(const char* fileName, const char* sectionName,
                                     uint32_t version, uint32_t& length);

    /// File offset of the section's first data byte and its data length. Throws when the file
    /// is unavailable, not a ".tdf" TDF or lacks the section; position is then left alone.
    void GetSectionDataPosition(const char* fileName, const char* sectionName, uint32_t version,
                                uint32_t& position, uint32_t& length);

    /// Copies up to bufferSize bytes of the section's data into buffer; a smaller buffer gets
    /// the first bytes. Throws like GetSectionDataPosition, and for a null or empty buffer.
    void LoadSectionData(const char* fileName, const char* sectionName, uint32_t version,
                         void* buffer, uint32_t bufferSize, uint32_t& bytesRead);

    /// Walks the sections from the stream's position. True when found, with the stream at
    /// the first data byte; false at the end, on a read error or on a damaged section.
    bool SeekSectionData(FILE* stream, const char* sectionName, uint32_t version,
                         uint32_t& length);

    /// Writes version, name length and name (a null name has length 0).
    /// False when a write was short or the stream is null.
    bool SaveNameVersion(FILE* stream, const char* sectionName, uint32_t version);

    /// False for a null or empty name, or when no regular file opens for reading under it.
    bool IsFileAvailable(const char* fileName);

    /// True when the name ends in "." and the extension (any ASCII case) and is longer than it.
    bool HasExtension(const char* fileName, const char* extension);
};

/// Size of the file in bytes, 0 when it can't be opened or is no regular file.
uint32_t FileSize(const char* fileName);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif
