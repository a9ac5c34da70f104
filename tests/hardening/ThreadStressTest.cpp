// Many client threads at once: the shared instance is never built twice and
// never outlives its last reference, and log lines from several threads never
// run into one another.
#include "common/source/source_utilities/uLogger.h"
#include "devid/CDeviceIdentifier.h"
#include "devid/DevIdLog.h"
#include "tests/common/TempDir.h"
#include "tests/devid/ProcessLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace Mora::Lux::Trace;

namespace {

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// Walks the instance lines of the log in the order they were written (under
// the library's lock) and returns how many instances live at the end; fails
// when a second one is built while one lives, or one dies that was not built.
int LiveInstancesAtEnd(const std::string& log)
{
    int live = 0;
    for (const std::string& line : Lines(log)) {
        if (line.find("DevId: Creating instance") != std::string::npos) {
            EXPECT_EQ(live, 0) << "a second instance was built: " << line;
            ++live;
        } else if (line.find("DevId: Deleting instance") != std::string::npos) {
            EXPECT_EQ(live, 1) << "an instance died that was not alive: " << line;
            --live;
        }
    }
    return live;
}

// Each thread takes and drops references in a random order of its own, mostly
// one at a time so that the count often falls to zero while other threads are
// creating, and keeps `kept` references at the end.
void CreateAndDestroyAtRandom(int threads, int steps, int kept)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&, t] {
            std::mt19937 random(1234u + static_cast<unsigned>(t));
            std::vector<CDeviceIdentifier*> held;
            for (++ready; ready.load() < threads;)
                std::this_thread::yield();
            for (int step = 0; step < steps; ++step) {
                if (held.empty() || (held.size() < 3 && random() % 4 == 0)) {
                    CDeviceIdentifier* instance = CreateDeviceIdentifier();
                    ASSERT_NE(instance, nullptr);
                    if (!held.empty()) {
                        EXPECT_EQ(instance, held.front()) << "two live instances";
                    }
                    held.push_back(instance);
                } else {
                    DestroyDeviceIdentifier(held.back(), false);
                    held.pop_back();
                }
                // Pauses let the count fall to zero between bursts of calls.
                if (random() % 2 == 0)
                    std::this_thread::sleep_for(std::chrono::microseconds(random() % 300));
            }
            const std::size_t keep = t < kept ? 1 : 0;
            if (held.size() < keep)
                held.push_back(CreateDeviceIdentifier());
            while (held.size() > keep) {
                DestroyDeviceIdentifier(held.back(), false);
                held.pop_back();
            }
        });
    }
    for (auto& worker : workers)
        worker.join();
}

class ThreadStress : public ::testing::Test {
protected:
    void SetUp() override
    {
        unsetenv("TRACE_XMLDB_DEVICES");
        unsetenv("COMMON_VEXIF");
        // The log system itself is made once, before any client thread runs.
        SetInternalTestMode();
    }
    devid_test::ProcessLog log;
};

TEST_F(ThreadStress, RandomCreatesAndDestroysLeaveNoInstance)
{
    CreateAndDestroyAtRandom(8, 300, 0);
    EXPECT_EQ(LiveInstancesAtEnd(log.text()), 0);
    // The count must have fallen to zero and risen again many times.
    EXPECT_GT(log.count("DevId: Creating instance"), 5u);
}

TEST_F(ThreadStress, RandomCreatesAndDestroysLeaveOneInstanceWhileReferenced)
{
    CreateAndDestroyAtRandom(8, 300, 3);
    EXPECT_EQ(LiveInstancesAtEnd(log.text()), 1);

    // Three references remain; the last of three destroys ends the instance.
    CDeviceIdentifier* instance = CreateDeviceIdentifier();
    for (int i = 0; i < 3; ++i)
        DestroyDeviceIdentifier(instance, false);
    EXPECT_EQ(LiveInstancesAtEnd(log.text()), 1);
    DestroyDeviceIdentifier(instance, false);
    EXPECT_EQ(LiveInstancesAtEnd(log.text()), 0);
}

// Parses "M      | <thread> <sequence> <x...>"; false when the line is not
// exactly that shape (std::regex recurses per character on long lines).
bool ParseStressLine(const std::string& line, int& thread, int& sequence, std::size_t& payload)
{
    const std::string prefix = "M      | ";
    if (line.compare(0, prefix.size(), prefix) != 0)
        return false;
    std::istringstream fields(line.substr(prefix.size()));
    std::string rest;
    if (!(fields >> thread >> sequence) || fields.get() != ' ')
        return false;
    std::getline(fields, rest);
    payload = rest.size();
    return rest.find_first_not_of('x') == std::string::npos;
}

// Every line is the writer's whole line: its prefix, its thread's text and
// the full payload, with nothing of another line inside.
void ExpectWholeLines(const std::string& text, int threads, int perThread, std::size_t longest)
{
    std::vector<int> next(threads, 0);
    int total = 0;
    for (const std::string& line : Lines(text)) {
        if (line.find("| ") == std::string::npos)
            continue;
        int thread = -1;
        int sequence = -1;
        std::size_t payload = 0;
        ASSERT_TRUE(ParseStressLine(line, thread, sequence, payload)) << "broken line: " << line.substr(0, 120);
        ASSERT_TRUE(thread >= 0 && thread < threads);
        EXPECT_EQ(sequence, next[thread]++) << "lines of one thread out of order";
        // Payloads beyond the line buffer are cut, never continued elsewhere.
        const std::size_t wanted = static_cast<std::size_t>(sequence * 97) % longest;
        EXPECT_TRUE(payload == wanted || (payload < wanted && line.size() == 4094))
            << "payload of " << payload << " instead of " << wanted;
        ++total;
    }
    EXPECT_EQ(total, threads * perThread);
}

TEST(LoggerStress, LinesFromManyThreadsStayWhole)
{
    devid_test::TempDir dir;
    MORA_LUX::uLogger logger(dir.file("stress.txt").c_str(), true);
    const int threads = 8;
    const int perThread = 300;
    const std::size_t longest = 6000;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&, t] {
            for (int i = 0; i < perThread; ++i)
                logger.Log(1, MORA_LUX::uLogger::TD_NONE, "| %d %d %s", t, i,
                           std::string(static_cast<std::size_t>(i * 97) % longest, 'x').c_str());
        });
    }
    for (auto& worker : workers)
        worker.join();
    ExpectWholeLines(devid_test::readFile(dir.file("stress.txt")), threads, perThread, longest);
}

TEST(LoggerStress, ProcessLogFromManyThreadsStaysWhole)
{
    devid_test::ProcessLog log;
    DestroyDeviceIdentifier(CreateDeviceIdentifier(), false);
    const int threads = 6;
    const int perThread = 200;
    const std::size_t longest = 3000;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&, t] {
            for (int i = 0; i < perThread; ++i)
                DevIdLog(1, "| %d %d %s", t, i, std::string(static_cast<std::size_t>(i * 97) % longest, 'x').c_str());
        });
    }
    for (auto& worker : workers)
        worker.join();

    // Process log lines carry a time stamp; strip it to the same shape.
    std::string text;
    for (const std::string& line : Lines(log.text())) {
        const std::size_t bar = line.find(" | ");
        if (bar != std::string::npos && line.find("| ", bar + 3) == bar + 3)
            text += "M      " + line.substr(bar + 3) + "\n";
    }
    ExpectWholeLines(text, threads, perThread, longest);
}

} // namespace
