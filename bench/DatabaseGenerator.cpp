#include "bench/DatabaseGenerator.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace devid_bench {

namespace fs = std::filesystem;

namespace {

const char kStampName[] = ".generated";
const char* const kModuleKinds[] = {"etm", "funnel", "etb", "stm", "tpiu", "replicator", "cti", "drm"};
const char* const kRegisterNames[] = {"CTRL", "STATUS", "CONFIG", "TRIGGER", "COUNTER", "FILTER", "ID", "LOCK"};

void Append(std::string& out, const char* format, ...) __attribute__((format(printf, 2, 3)));

void Append(std::string& out, const char* format, ...)
{
    char line[512];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    if (length > 0)
        out.append(line, std::min<std::size_t>(static_cast<std::size_t>(length), sizeof line - 1));
}

std::string ModuleName(uint32_t index)
{
    char name[32];
    std::snprintf(name, sizeof name, "M%04u_%s", index, kModuleKinds[index % 8]);
    return name;
}

std::string DeviceHeader(const std::string& deviceName, uint32_t deviceId)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<!-- Synthetic device description written for the benchmarks. -->\n"
                       "<database>\n";
    Append(text, "  <device id=\"%s\" value=\"0x%08X\" mask=\"0xFFFFFFFF\">\n", deviceName.c_str(), deviceId);
    return text;
}

const char kDeviceFooter[] = "  </device>\n</database>\n";

void AppendProcessors(std::string& text, const DeviceShape& shape)
{
    text += "    <procs>\n";
    for (uint32_t p = 0; p < shape.processors; ++p) {
        // Half of the cores say who they are through a register, as real ones do.
        if (p % 2 == 0) {
            Append(text, "      <proc id=\"core%u\" kind=\"Talon\" traceid=\"%u\">\n", p, p + 1);
            text += "        <identifier>\n"
                    "          <register id=\"CORE_ID\" type=\"reg\" address=\"CORE_ID\" page=\"0\" addrunit=\"1\" "
                    "width=\"32\"/>\n";
            Append(text, "          <value idvalue=\"%u\"/>\n", p);
            text += "        </identifier>\n      </proc>\n";
        } else {
            Append(text, "      <proc id=\"core%u\" kind=\"Quill\"/>\n", p);
        }
    }
    text += "    </procs>\n";
}

void AppendModules(std::string& text, const DeviceShape& shape)
{
    text += "    <modules>\n";
    for (uint32_t m = 0; m < shape.modules; ++m) {
        const uint32_t base = 0xE0040000u + m * 0x1000u;
        Append(text, "      <module id=\"%s\" kind=\"%s\" proc=\"core%u\" version=\"4.%u\">\n", ModuleName(m).c_str(),
               kModuleKinds[m % 8], shape.processors > 0 ? m % shape.processors : 0, m % 3);
        text += "        <registers>\n";
        for (uint32_t r = 0; r < shape.registersPerModule; ++r) {
            const char* name = kRegisterNames[r % 8];
            // Every fourth register is one the debug driver knows by name.
            if (r % 4 == 3)
                Append(text,
                       "          <reg id=\"%s%u\" type=\"reg\" address=\"%s%uR\" page=\"0\" addrunit=\"1\" "
                       "width=\"32\"/>\n",
                       name, r / 8, name, r / 8);
            else
                Append(text,
                       "          <reg id=\"%s%u\" type=\"mem\" address=\"0x%08X\" page=\"0\" addrunit=\"1\" "
                       "width=\"32\"/>\n",
                       name, r / 8, base + r * 4u);
        }
        text += "        </registers>\n"
                "        <characteristics>\n"
                "          <characteristic id=\"fifo_bytes\" value=\"64\" description=\"Bytes buffered before the "
                "trace port stalls the core\"/>\n";
        Append(text, "          <characteristic id=\"channels\" value=\"%u\"/>\n", 1u + m % 16);
        text += "        </characteristics>\n";
        if (m % 2 == 0) {
            text += "        <mapping id=\"name.value\">\n"
                    "          <map name=\"branch_broadcast\" value=\"1\"/>\n"
                    "          <map name=\"timestamp_bits\" value=\"48\"/>\n"
                    "        </mapping>\n";
        }
        text += "      </module>\n";
    }
    text += "    </modules>\n";
}

void AppendSources(std::string& text, const DeviceShape& shape)
{
    text += "    <sources>\n";
    for (uint32_t s = 0; s < shape.sources; ++s) {
        Append(text, "      <source id=\"SRC%03u\" proc=\"core%u\" stmmaster=\"%s\">\n", s,
               shape.processors > 0 ? s % shape.processors : 0, s % 8 == 7 ? "true" : "false");
        text += "        <components>\n";
        for (uint32_t c = 0; c < shape.componentsPerSource && shape.modules > 0; ++c)
            Append(text, "          <component module=\"%s\"/>\n",
                   ModuleName((s * shape.componentsPerSource + c) % shape.modules).c_str());
        text += "        </components>\n"
                "        <characteristics>\n"
                "          <characteristic id=\"port_width\" value=\"32\" description=\"Trace port bits\"/>\n"
                "        </characteristics>\n"
                "      </source>\n";
    }
    text += "    </sources>\n";
}

void AppendRoutes(std::string& text, const DeviceShape& shape)
{
    text += "    <trace_routes>\n";
    for (uint32_t r = 0; r < shape.routes; ++r) {
        text += "      <route>\n";
        Append(text, "        <source source=\"SRC%03u\"/>\n", shape.sources > 0 ? r % shape.sources : 0);
        const uint32_t modules = std::max<uint32_t>(shape.modules, 1);
        for (uint32_t l = 0; l < shape.linksPerRoute; ++l)
            Append(text, "        <link module=\"%s\"/>\n", ModuleName((r * 7 + l * 13) % modules).c_str());
        Append(text, "        <sink module=\"%s\"/>\n", ModuleName((r * 11 + 2) % modules).c_str());
        Append(text, "        <pin module=\"%s\"/>\n", ModuleName((r * 5 + 7) % modules).c_str());
        text += "      </route>\n";
    }
    text += "    </trace_routes>\n";
}

std::string DeviceBody(const DeviceShape& shape)
{
    std::string text;
    AppendProcessors(text, shape);
    AppendModules(text, shape);
    AppendSources(text, shape);
    AppendRoutes(text, shape);
    return text;
}

bool WriteFile(const std::string& path, const std::string& a, const std::string& b, const char* c,
               std::string& error)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << a << b << c;
    out.close();
    if (!out) {
        error = "cannot write " + path;
        return false;
    }
    return true;
}

std::string StampText(uint32_t count, uint32_t matchingId, const DeviceShape& shape)
{
    std::string text;
    Append(text, "files=%u matching=0x%08X procs=%u modules=%u registers=%u sources=%u components=%u routes=%u links=%u\n",
           count, matchingId, shape.processors, shape.modules, shape.registersPerModule, shape.sources,
           shape.componentsPerSource, shape.routes, shape.linksPerRoute);
    return text;
}

std::string ReadStamp(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool Locate(const std::string& folder, const std::string& matchingFile, GeneratedDatabase& result,
            std::string& error)
{
    if (!DatabaseGenerator::ListCandidates(folder, result.filesInDirectoryOrder, error))
        return false;
    const auto& files = result.filesInDirectoryOrder;
    const auto found = std::find(files.begin(), files.end(), matchingFile);
    if (found == files.end()) {
        error = matchingFile + " is missing from the directory listing";
        return false;
    }
    result.folder = folder;
    result.matchingFile = matchingFile;
    result.matchingPosition = static_cast<std::size_t>(found - files.begin());
    return true;
}

} // namespace

DeviceShape DatabaseGenerator::TypicalDevice()
{
    return DeviceShape{8, 250, 6, 24, 4, 48, 3};
}

DeviceShape DatabaseGenerator::LargeDevice()
{
    return DeviceShape{16, 2000, 32, 500, 8, 1000, 4};
}

std::string DatabaseGenerator::DescribeDevice(const std::string& deviceName, uint32_t deviceId,
                                              const DeviceShape& shape)
{
    return DeviceHeader(deviceName, deviceId) + DeviceBody(shape) + kDeviceFooter;
}

bool DatabaseGenerator::ListCandidates(const std::string& folder, std::vector<std::string>& paths,
                                       std::string& error)
{
    paths.clear();
    std::error_code failure;
    fs::directory_iterator entry(folder, failure);
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        if (name.find("device") != std::string::npos && name.find("xml") != std::string::npos)
            paths.push_back(entry->path().string());
    }
    if (failure) {
        error = "cannot list " + folder + ": " + failure.message();
        return false;
    }
    return true;
}

bool DatabaseGenerator::WriteDatabase(const std::string& folder, uint32_t count, uint32_t matchingId,
                                      const DeviceShape& shape, GeneratedDatabase& result, std::string& error)
{
    if (count == 0) {
        error = "a database needs at least one file";
        return false;
    }
    const std::string stampPath = folder + "/" + kStampName;
    const std::string stamp = StampText(count, matchingId, shape);

    // The stamp's second line names the matching file; a kept folder must
    // still list it last.
    const std::string previous = ReadStamp(stampPath);
    if (previous.compare(0, stamp.size(), stamp) == 0 && previous.size() > stamp.size()) {
        std::string matching = previous.substr(stamp.size());
        matching.erase(matching.find_last_not_of('\n') + 1);
        std::string ignored;
        if (Locate(folder, folder + "/" + matching, result, ignored) && result.filesInDirectoryOrder.size() == count &&
            result.matchingPosition + 1 == count) {
            result.reused = true;
            return true;
        }
    }

    std::error_code failure;
    fs::remove_all(folder, failure);
    fs::create_directories(folder, failure);
    if (failure) {
        error = "cannot create " + folder + ": " + failure.message();
        return false;
    }

    const std::string body = DeviceBody(shape);
    char name[64];
    for (uint32_t i = 0; i + 1 < count; ++i) {
        std::snprintf(name, sizeof name, "device_%05u.xml", i);
        // IDs differ in their low 28 bits too, so no revision mask could confuse them.
        const uint32_t id = 0x10000000u | ((i + 1u) << 12) | 0x02Fu;
        if (id == matchingId) {
            error = "a generated ID collides with the matching ID";
            return false;
        }
        if (!WriteFile(folder + "/" + name, DeviceHeader(std::string("synth") + std::to_string(i), id), body,
                       kDeviceFooter, error))
            return false;
    }
    std::string matching = folder + "/device_match.xml";
    if (!WriteFile(matching, DeviceHeader("synth_match", matchingId), body, kDeviceFooter, error))
        return false;

    if (!Locate(folder, matching, result, error))
        return false;
    if (result.matchingPosition + 1 != count) {
        // The directory is not read in creation order (ext4 lists by name
        // hash): the name that comes last takes the matching description.
        const std::string last = result.filesInDirectoryOrder.back();
        const std::string parked = folder + "/.swap";
        fs::rename(last, parked, failure);
        if (!failure)
            fs::rename(matching, last, failure);
        if (!failure)
            fs::rename(parked, matching, failure);
        if (failure) {
            error = "cannot swap names in " + folder + ": " + failure.message();
            return false;
        }
        matching = last;
        if (!Locate(folder, matching, result, error))
            return false;
    }

    std::ofstream out(stampPath, std::ios::binary | std::ios::trunc);
    out << stamp << fs::path(matching).filename().string() << "\n";
    return true;
}

} // namespace devid_bench
