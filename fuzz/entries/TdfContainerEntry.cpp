// A trace data file made of the bytes: every read operation, then a section
// appended, after which every section that was whole before must read the same.
#include "fuzz/entries/FuzzEntries.h"
#include "fuzz/entries/FuzzWorkspace.h"

#include "devid/target/HexkitError.h"
#include "tdf/TDFHandler.h"

#include <algorithm>
#include <string>
#include <vector>

namespace devid_fuzz {

namespace {

using Mora::Lux::Hexkit::HexkitError;
using Mora::Lux::Trace::FileSize;
using Mora::Lux::Trace::TDFHandler;

const char kEntry[] = "tdf_container";

struct Probe {
    const char* name;
    uint32_t version;
};

// The device identifier's own section, another version of it, and an unnamed one.
const Probe kProbes[] = {{"DEVID", 1}, {"DEVID", 2}, {"", 0}};

struct Section {
    bool found = false;
    uint32_t position = 0, length = 0;
    std::string data;
};

Section ReadSection(TDFHandler& tdf, const std::string& path, const Probe& probe)
{
    Section section;
    try {
        uint32_t length = 0, position = 0, positionLength = 0;
        tdf.GetSectionDataLengthInBytes(path.c_str(), probe.name, probe.version, length);
        tdf.GetSectionDataPosition(path.c_str(), probe.name, probe.version, position, positionLength);
        DEVID_FUZZ_CHECK(kEntry, positionLength == length, "both lookups agree on the data length");

        // A length word may claim more than the file holds; the buffer is
        // sized by what can be there, so a hostile word cannot demand gigabytes.
        const uint32_t room = std::min<uint32_t>(length, FileSize(path.c_str()));
        std::vector<char> buffer(std::max<uint32_t>(room, 1));
        uint32_t bytesRead = 0;
        tdf.LoadSectionData(path.c_str(), probe.name, probe.version, buffer.data(),
                            static_cast<uint32_t>(buffer.size()), bytesRead);
        DEVID_FUZZ_CHECK(kEntry, bytesRead <= buffer.size(), "a load stays within its buffer");

        char head[4] = {};
        uint32_t headRead = 0;
        tdf.LoadSectionData(path.c_str(), probe.name, probe.version, head, sizeof head, headRead);
        DEVID_FUZZ_CHECK(kEntry, headRead <= sizeof head, "a short buffer gets the first bytes only");

        section = {true, position, length, std::string(buffer.data(), bytesRead)};
    } catch (const HexkitError&) {
        // A file without the section, or not a TDF at all: refused, as it should be.
    }
    return section;
}

} // namespace

int TdfContainer(const uint8_t* data, size_t size)
{
    FuzzWorkspace& workspace = FuzzWorkspace::Get();
    const std::string path = workspace.Folder("tdf") + "/fuzz.tdf";
    workspace.WriteFile(path, data, size);

    TDFHandler tdf;
    tdf.ISTDF(path.c_str());
    const uint32_t sizeBefore = FileSize(path.c_str());
    DEVID_FUZZ_CHECK(kEntry, sizeBefore == size, "the file size is the number of bytes written");

    std::vector<Section> before;
    for (const Probe& probe : kProbes)
        before.push_back(ReadSection(tdf, path, probe));

    const char payload[] = "EMU=kmr770\nPORT=0\n";
    try {
        uint32_t offset = 0, sectionLength = 0;
        tdf.SaveSectionHeader(path.c_str(), "FUZZ", 7, offset);
        DEVID_FUZZ_CHECK(kEntry, offset == sizeBefore, "a section is appended at the end");
        tdf.SaveSectionData(path.c_str(), "FUZZ", offset, payload, 1, sizeof payload - 1, sectionLength);
    } catch (const HexkitError&) {
        // An offset inside the identifier (a file shorter than 4 bytes) is refused.
    }

    for (size_t i = 0; i < before.size(); ++i) {
        const Section& old = before[i];
        if (!old.found || static_cast<uint64_t>(old.position) + old.length > sizeBefore)
            continue;
        const Section now = ReadSection(tdf, path, kProbes[i]);
        DEVID_FUZZ_CHECK(kEntry, now.found && now.position == old.position && now.data == old.data,
                         "appending a section leaves every whole section as it was");
    }
    return 0;
}

} // namespace devid_fuzz
