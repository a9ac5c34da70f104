// Runs the built devid program the way a user would, with its own HOME and
// none of the variables it reads inherited, and captures what it prints.
#ifndef DEVID_TESTS_CLI_TOOLRUNNER_H
#define DEVID_TESTS_CLI_TOOLRUNNER_H

#include "tests/common/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace devid_test {

inline const std::string kExampleDb = DEVID_SOURCE_DIR "/examples/db";
inline const std::string kExampleBoard = DEVID_SOURCE_DIR "/examples/board";

// Parsing rejects anything that is not valid JSON in valid UTF-8, so every
// document a test reads is checked for that too; members keep their order.
using Json = nlohmann::ordered_json;

/// The string a member holds; throws when it holds something else.
inline std::string Text(const Json& value) { return value.get<std::string>(); }

struct ToolResult {
    int status = -1;
    std::string out;
    std::string err;
};

class ToolRunner {
public:
    ToolRunner() { scratch.write("home/.keep", ""); }

    /// Runs devid in the scratch folder; `environment` holds extra "NAME=value" entries.
    ToolResult Run(std::vector<std::string> args, const std::vector<std::string>& environment = {}) const
    {
        args.insert(args.begin(), DEVID_BUILD_DIR "/bin/devid");
        const pid_t child = fork();
        if (child == 0) {
            for (const char* name : {"TRACE_XMLDB_DEVICES", "COMMON_VEXIF", "MORA_TRACE_LOGGING",
                                     "MORA_TRACE_DEBUGCLIENT_PID", "MORA_TRACE_LOGGING_DIR", "MORA_TRACE_DATA_DIR",
                                     "MORA_TRACE_SETTINGS_DIR"})
                unsetenv(name);
            setenv("HOME", home().c_str(), 1);
            for (const std::string& entry : environment)
                putenv(const_cast<char*>(entry.c_str()));
            const int out = open(scratch.file("stdout.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            const int err = open(scratch.file("stderr.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            if (out < 0 || err < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0 || chdir(scratch.path().c_str()) != 0)
                _exit(127);
            std::vector<char*> argv;
            for (std::string& arg : args)
                argv.push_back(arg.data());
            argv.push_back(nullptr);
            execv(argv[0], argv.data());
            _exit(127);
        }
        ToolResult result;
        int status = 0;
        if (child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status))
            result.status = WEXITSTATUS(status);
        result.out = readFile(scratch.file("stdout.txt"));
        result.err = readFile(scratch.file("stderr.txt"));
        return result;
    }

    /// Runs on the example board, and on the example database unless `args` name another.
    ToolResult RunOnExample(std::vector<std::string> args) const
    {
        if (std::find(args.begin(), args.end(), "--db") == args.end())
            args.insert(args.end(), {"--db", kExampleDb});
        args.insert(args.end(), {"--board", kExampleBoard});
        return Run(args);
    }

    /// Runs a --json command on the example, checks its exit status and parses
    /// the document, which must open with the schema and close with the log.
    Json JsonOf(std::vector<std::string> args, int status = 0, bool onExample = true) const
    {
        args.push_back("--json");
        const ToolResult result = onExample ? RunOnExample(args) : Run(args);
        EXPECT_EQ(result.status, status) << args.front() << ": " << result.err;
        Json doc = Json::parse(result.out);
        EXPECT_EQ(doc.begin().key() + "=" + Text(doc.at("schema")), "schema=devid/1");
        EXPECT_EQ(doc.rbegin().key(), "log");
        EXPECT_EQ(doc.contains("error"), status != 0) << result.out;
        return doc;
    }

    std::string home() const { return scratch.file("home"); }

    TempDir scratch;
};

inline const Json& FindBy(const Json& list, const std::string& key, const std::string& value)
{
    for (const Json& item : list)
        if (item.at(key) == value)
            return item;
    throw std::out_of_range("no " + key + " " + value);
}

} // namespace devid_test

#endif
