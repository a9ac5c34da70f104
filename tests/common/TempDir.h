// A scratch folder for one test, removed with everything in it at the end.
#ifndef DEVID_TESTS_TEMPDIR_H
#define DEVID_TESTS_TEMPDIR_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace devid_test {

class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "devid-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr)
            m_path = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        if (!m_path.empty())
            std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

    /// Writes `content` to `name` below the folder (creating parent folders) and returns its path.
    std::string write(const std::string& name, const std::string& content) const {
        std::string full = file(name);
        std::filesystem::create_directories(std::filesystem::path(full).parent_path());
        std::ofstream(full, std::ios::binary) << content;
        return full;
    }

private:
    std::string m_path;
};

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

} // namespace devid_test

#endif
