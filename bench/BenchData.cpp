#include "bench/BenchData.h"

#include "devid/target/HexkitError.h"
#include "tdf/TDFHandler.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

namespace devid_bench {

namespace fs = std::filesystem;

namespace {

std::unique_ptr<BenchData>& Instance()
{
    static std::unique_ptr<BenchData> data;
    return data;
}

bool WriteText(const std::string& path, const std::string& text, std::string& error)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out)
        error = "cannot write " + path;
    return static_cast<bool>(out);
}

// Removes whatever an earlier run left in `folder` and creates it afresh.
bool MakeEmptyFolder(const std::string& folder, std::string& error)
{
    std::error_code failure;
    fs::remove_all(folder, failure);
    fs::create_directories(folder, failure);
    if (failure)
        error = "cannot create " + folder + ": " + failure.message();
    return !failure;
}

std::string HexId(uint32_t id)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", id);
    return text;
}

} // namespace

void BenchData::SetRoot(const std::string& root)
{
    Instance().reset(new BenchData(root));
}

BenchData& BenchData::Get()
{
    return *Instance();
}

const GeneratedDatabase* BenchData::Database(uint32_t files, std::string& error)
{
    auto& entry = m_databases[files];
    if (entry)
        return entry.get();
    auto database = std::make_unique<GeneratedDatabase>();
    const std::string folder = m_root + "/db" + std::to_string(files);
    if (!DatabaseGenerator::WriteDatabase(folder, files, kMatchingId, DatabaseGenerator::TypicalDevice(), *database,
                                          error)) {
        m_databases.erase(files);
        return nullptr;
    }
    std::error_code ignored;
    std::cerr << "bench data: " << folder << (database->reused ? " (kept)" : " (written)") << ", " << files
              << " files of " << fs::file_size(database->matchingFile, ignored) / 1024 << " KiB, matching file "
              << fs::path(database->matchingFile).filename().string() << " at position "
              << database->matchingPosition + 1 << " of " << database->filesInDirectoryOrder.size()
              << " in directory order\n";
    entry = std::move(database);
    return entry.get();
}

std::string BenchData::LargeDeviceFolder(std::string& error)
{
    if (!m_largeFolder.empty())
        return m_largeFolder;
    const std::string folder = m_root + "/large";
    if (!MakeEmptyFolder(folder, error))
        return "";
    const std::string path = folder + "/device_large.xml";
    if (!WriteText(path, DatabaseGenerator::DescribeDevice("large", kLargeId, DatabaseGenerator::LargeDevice()),
                   error))
        return "";
    std::error_code failure;
    std::cerr << "bench data: " << path << ", " << fs::file_size(path, failure) / 1024 << " KiB\n";
    m_largeFolder = folder;
    return m_largeFolder;
}

std::string BenchData::LargeDeviceSession(std::string& error)
{
    if (!m_largeSession.empty())
        return m_largeSession;
    const std::string path = m_root + "/large-session.dim";
    if (!WriteText(path, "EMU=kmr770\nPORT=0\nDEVICEID=" + HexId(kLargeId) + "\nDEVINFO=\nOUTFILES=\nTRACEID=\n",
                   error))
        return "";
    m_largeSession = path;
    return m_largeSession;
}

std::string BenchData::SectionFile(uint32_t sections, std::string& error)
{
    auto& path = m_sectionFiles[sections];
    if (!path.empty())
        return path;
    const std::string file = m_root + "/sections" + std::to_string(sections) + ".tdf";
    try {
        Mora::Lux::Trace::TDFHandler tdf;
        tdf.CreateTDFFile(file.c_str());
        for (uint32_t i = 0; i < sections; ++i) {
            char name[32];
            std::snprintf(name, sizeof name, "SECTION_%05u", i);
            const bool last = i + 1 == sections;
            // Sizes vary so that no two headers share an alignment pattern.
            const std::string data(32 + (i * 37) % 257, static_cast<char>('a' + i % 26));
            uint32_t offset = 0;
            uint32_t length = 0;
            tdf.SaveSectionHeader(file.c_str(), last ? "DEVID" : name, last ? 1 : 1 + i % 3, offset);
            tdf.SaveSectionData(file.c_str(), nullptr, offset, data.data(), 1, data.size(), length);
        }
    } catch (const Mora::Lux::Hexkit::HexkitError& failure) {
        error = file + ": " + failure.what();
        m_sectionFiles.erase(sections);
        return "";
    }
    std::error_code ignored;
    std::cerr << "bench data: " << file << ", " << sections << " sections, " << fs::file_size(file, ignored) / 1024
              << " KiB\n";
    path = file;
    return path;
}

std::string BenchData::LogFolder(std::string& error)
{
    if (!m_logFolder.empty())
        return m_logFolder;
    const std::string folder = m_root + "/logs";
    if (!MakeEmptyFolder(folder, error))
        return "";
    m_logFolder = folder;
    return m_logFolder;
}

} // namespace devid_bench
