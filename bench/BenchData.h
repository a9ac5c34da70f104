// The files the benchmarks work on, made on first use below one data folder
// and kept there for later runs.
#ifndef DEVID_BENCH_BENCHDATA_H
#define DEVID_BENCH_BENCHDATA_H

#include "bench/DatabaseGenerator.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace devid_bench {

/// The device ID that the one matching file of every generated database describes.
constexpr uint32_t kMatchingId = 0x2C0DE02Fu;
/// The large device's ID.
constexpr uint32_t kLargeId = 0x3A5E102Fu;

class BenchData {
public:
    /// The data of this run, below `root`; set once by main.
    static void SetRoot(const std::string& root);
    static BenchData& Get();

    /// A database of `files` typical devices; null (with `error`) when it cannot be written.
    const GeneratedDatabase* Database(uint32_t files, std::string& error);
    /// A folder holding only the large device; "" (with `error`) on failure.
    std::string LargeDeviceFolder(std::string& error);
    /// A saved session naming the large device's ID, for an offline load.
    std::string LargeDeviceSession(std::string& error);
    /// A trace data file of `sections` sections, the last one named "DEVID".
    std::string SectionFile(uint32_t sections, std::string& error);
    /// A folder for log files, emptied once per run.
    std::string LogFolder(std::string& error);

    const std::string& Root() const { return m_root; }

private:
    explicit BenchData(std::string root) : m_root(std::move(root)) {}

    std::string m_root;
    std::map<uint32_t, std::unique_ptr<GeneratedDatabase>> m_databases;
    std::string m_largeFolder;
    std::string m_largeSession;
    std::map<uint32_t, std::string> m_sectionFiles;
    std::string m_logFolder;
};

} // namespace devid_bench

#endif
