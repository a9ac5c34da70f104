#include "cli/DeviceTree.h"

#include <libfdt.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

extern char** environ;

namespace devid_cli {

namespace {

namespace fs = std::filesystem;

bool ReadWhole(const std::string& path, std::vector<char>& content)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    content.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

// Runs dtc on a source file and reads the blob it writes; "" or the reason it failed.
std::string Compile(const std::string& path, std::vector<char>& blob)
{
    std::string scratch = (fs::temp_directory_path() / "devid-dtc-XXXXXX").string();
    const int fd = mkstemp(scratch.data());
    if (fd < 0)
        return "cannot make a scratch file for dtc";
    close(fd);
    const std::string includes = fs::path(path).parent_path().string();
    std::vector<std::string> args{"dtc", "-q", "-I", "dts", "-O", "dtb", "-o", scratch, path};
    if (!includes.empty())
        args.insert(args.end() - 1, {"-i", includes});
    std::vector<char*> argv;
    for (std::string& arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);

    std::string error;
    pid_t child = 0;
    int status = 0;
    if (posix_spawnp(&child, "dtc", nullptr, nullptr, argv.data(), environ) != 0)
        error = "dtc is not installed (apt-get install device-tree-compiler)";
    else if (waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        error = WIFEXITED(status) && WEXITSTATUS(status) == 127 ? "dtc is not installed (apt-get install device-tree-compiler)"
                                                              : "dtc could not compile it";
    else if (!ReadWhole(scratch, blob))
        error = "cannot read what dtc wrote";
    std::remove(scratch.c_str());
    return error;
}

} // namespace

DeviceTree DeviceTree::Load(const std::string& path, std::string& error)
{
    DeviceTree tree;
    std::vector<char> blob;
    const bool source = fs::path(path).extension() == ".dts";
    if (source)
        error = Compile(path, blob);
    else if (!ReadWhole(path, blob))
        error = "cannot read the file";
    if (!error.empty())
        return tree;
    // fdt_check_full walks every tag, so later calls never read past the blob.
    // It dereferences a null name on trees older than version 16, which no
    // current dtc writes, so those are refused first.
    if (blob.size() < sizeof(fdt_header) || fdt_totalsize(blob.data()) > blob.size() ||
        fdt_version(blob.data()) < 16 || fdt_check_full(blob.data(), blob.size()) != 0) {
        error = "not a compiled device tree";
        return tree;
    }
    tree.m_blob = std::move(blob);
    return tree;
}

std::vector<int> DeviceTree::Nodes() const
{
    std::vector<int> nodes;
    if (empty())
        return nodes;
    for (int node = 0, depth = 0; node >= 0 && depth >= 0; node = fdt_next_node(m_blob.data(), node, &depth))
        nodes.push_back(node);
    return nodes;
}

std::vector<int> DeviceTree::Children(int node) const
{
    std::vector<int> children;
    if (empty())
        return children;
    int child = 0;
    fdt_for_each_subnode(child, m_blob.data(), node) children.push_back(child);
    return children;
}

int DeviceTree::Child(int node, const char* name) const
{
    return empty() ? -1 : fdt_subnode_offset(m_blob.data(), node, name);
}

int DeviceTree::Parent(int node) const
{
    return empty() || node <= 0 ? -1 : fdt_parent_offset(m_blob.data(), node);
}

std::string DeviceTree::Name(int node) const
{
    const char* name = empty() ? nullptr : fdt_get_name(m_blob.data(), node, nullptr);
    return name != nullptr ? name : "";
}

std::string DeviceTree::Path(int node) const
{
    char path[1024];
    if (empty() || fdt_get_path(m_blob.data(), node, path, sizeof path) != 0)
        return Name(node);
    return path;
}

std::vector<std::string> DeviceTree::Strings(int node, const char* property) const
{
    std::vector<std::string> strings;
    int length = 0;
    const char* data = empty() ? nullptr : static_cast<const char*>(fdt_getprop(m_blob.data(), node, property, &length));
    for (int at = 0; data != nullptr && at < length;) {
        const void* end = std::memchr(data + at, '\0', static_cast<std::size_t>(length - at));
        const int size = end != nullptr ? static_cast<int>(static_cast<const char*>(end) - (data + at)) : length - at;
        strings.emplace_back(data + at, static_cast<std::size_t>(size));
        at += size + 1;
    }
    return strings;
}

std::optional<uint32_t> DeviceTree::Cell(int node, const char* property) const
{
    int length = 0;
    const void* data = empty() ? nullptr : fdt_getprop(m_blob.data(), node, property, &length);
    if (data == nullptr || length < 4)
        return std::nullopt;
    return fdt32_ld(static_cast<const fdt32_t*>(data));
}

int DeviceTree::ByPhandle(uint32_t phandle) const
{
    return empty() || phandle == 0 ? -1 : fdt_node_offset_by_phandle(m_blob.data(), phandle);
}

uint32_t DeviceTree::Phandle(int node) const
{
    return empty() ? 0 : fdt_get_phandle(m_blob.data(), node);
}

} // namespace devid_cli
