// Runs the built devid program the way a user would: its own HOME, the
// bundled example database and board unless a test says otherwise, and
// standard output, standard error and exit status captured.
#ifndef DEVID_TESTS_CLI_TOOLRUNNER_H
#define DEVID_TESTS_CLI_TOOLRUNNER_H

#include "tests/cli/JsonReader.h"
#include "tests/common/TempDir.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

extern char** environ;

namespace devid_test {

struct ToolResult {
    int status = -1;
    std::string out;
    std::string err;

    Json json() const { return JsonReader::Parse(out); }
};

class ToolRunner {
public:
    static std::string Program() { return std::string(DEVID_BUILD_DIR) + "/bin/devid"; }
    static std::string ExampleDb() { return std::string(DEVID_SOURCE_DIR) + "/examples/db"; }
    static std::string ExampleBoard() { return std::string(DEVID_SOURCE_DIR) + "/examples/board"; }

    /// HOME is a fresh folder of its own, so saved files and logs of one test
    /// never meet another's.
    ToolRunner() : m_home(m_scratch.file("home")) { m_scratch.write("home/.keep", ""); }

    const TempDir& scratch() const { return m_scratch; }
    const std::string& home() const { return m_home; }

    /// Runs devid with `args` in the scratch folder. The variables the tool
    /// reads are cleared first; `environment` entries ("NAME=value") are added.
    ToolResult Run(const std::vector<std::string>& args, const std::vector<std::string>& environment = {}) const
    {
        const std::string outPath = m_scratch.file("stdout.txt");
        const std::string errPath = m_scratch.file("stderr.txt");
        std::vector<std::string> env;
        for (char** entry = environ; *entry != nullptr; ++entry) {
            const std::string line(*entry);
            if (!Cleared(line))
                env.push_back(line);
        }
        env.push_back("HOME=" + m_home);
        env.insert(env.end(), environment.begin(), environment.end());

        std::vector<std::string> argv{Program()};
        argv.insert(argv.end(), args.begin(), args.end());
        ToolResult result;
        const pid_t child = fork();
        if (child == 0) {
            const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            const int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            if (out < 0 || err < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0 || chdir(m_scratch.path().c_str()) != 0)
                _exit(127);
            std::vector<char*> cargv;
            for (std::string& arg : argv)
                cargv.push_back(arg.data());
            cargv.push_back(nullptr);
            std::vector<char*> cenv;
            for (std::string& entry : env)
                cenv.push_back(entry.data());
            cenv.push_back(nullptr);
            execve(cargv[0], cargv.data(), cenv.data());
            _exit(127);
        }
        int status = 0;
        if (child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status))
            result.status = WEXITSTATUS(status);
        result.out = readFile(outPath);
        result.err = readFile(errPath);
        return result;
    }

    /// Run with the example database and board given explicitly.
    ToolResult RunOnExample(std::vector<std::string> args, const std::vector<std::string>& environment = {}) const
    {
        args.insert(args.end(), {"--db", ExampleDb(), "--board", ExampleBoard()});
        return Run(args, environment);
    }

private:
    static bool Cleared(const std::string& entry)
    {
        for (const char* name : {"HOME=", "TRACE_XMLDB_DEVICES=", "COMMON_VEXIF=", "MORA_TRACE_LOGGING=",
                                 "MORA_TRACE_DEBUGCLIENT_PID=", "MORA_TRACE_LOGGING_DIR=", "MORA_TRACE_DATA_DIR=",
                                 "MORA_TRACE_SETTINGS_DIR="})
            if (entry.compare(0, std::strlen(name), name) == 0)
                return true;
        return false;
    }

    TempDir m_scratch;
    std::string m_home;
};

} // namespace devid_test

#endif
