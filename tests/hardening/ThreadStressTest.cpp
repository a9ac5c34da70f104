// Many client threads at once: the shared instance is never built twice and
// never outlives its last reference, and log lines from several threads never
// run into one another.
#include "common/source/source_utilities/uLogger.h"
#include "devid/CDeviceIdentifier.h"
#include "devid/DevIdLog.h"
#include "tests/devid/ProcessLog.h"
#include "tests/hardening/HardeningSupport.h"

#include <atomic>
#include <random>
#include <thread>

using namespace Mora::Lux::Trace;

namespace {

void RunThreads(int threads, const std::function<void(int)>& work)
{
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
        workers.emplace_back(work, t);
    for (auto& worker : workers)
        worker.join();
}

// Replays the instance lines of the log (written under the library's lock) and
// returns how many instances live at the end; fails when a second one is built
// while one lives, or one dies that was not built.
int LiveInstancesAtEnd(const std::string& log)
{
    int live = 0;
    std::istringstream in(log);
    for (std::string line; std::getline(in, line);) {
        if (line.find("DevId: Creating instance") != std::string::npos) {
            EXPECT_EQ(live++, 0) << "a second instance was built: " << line;
        } else if (line.find("DevId: Deleting instance") != std::string::npos) {
            EXPECT_EQ(live--, 1) << "an instance died that was not alive: " << line;
        }
    }
    return live;
}

TEST(ThreadStress, RandomCreatesAndDestroysLeaveOneInstanceWhileReferencedThenNone)
{
    devid_test::ProcessLog log;
    unsetenv("TRACE_XMLDB_DEVICES");
    unsetenv("COMMON_VEXIF");
    SetInternalTestMode();
    const int threads = 8;
    std::atomic<int> ready{0};
    // Mostly one reference at a time, with random pauses empty-handed, so the
    // count often falls to zero while other threads are creating; three threads keep one.
    RunThreads(threads, [&](int t) {
        std::mt19937 random(1234u + static_cast<unsigned>(t));
        std::vector<CDeviceIdentifier*> held;
        for (++ready; ready.load() < threads;)
            std::this_thread::yield();
        for (int step = 0; step < 300; ++step) {
            if (held.empty() || (held.size() < 3 && random() % 4 == 0)) {
                held.push_back(CreateDeviceIdentifier());
                ASSERT_TRUE(held.back() != nullptr && held.back() == held.front()) << "two live instances";
            } else {
                DestroyDeviceIdentifier(held.back(), false);
                held.pop_back();
            }
            if (held.empty())
                std::this_thread::sleep_for(std::chrono::microseconds(random() % 300));
        }
        const std::size_t keep = t < 3 ? 1 : 0;
        if (held.size() < keep)
            held.push_back(CreateDeviceIdentifier());
        for (; held.size() > keep; held.pop_back())
            DestroyDeviceIdentifier(held.back(), false);
    });
    EXPECT_EQ(LiveInstancesAtEnd(log.text()), 1);
    EXPECT_GT(log.count("DevId: Creating instance"), 5u) << "the count should have fallen to zero many times";

    // Three references remain; the last of three destroys ends the instance.
    CDeviceIdentifier* instance = CreateDeviceIdentifier();
    for (int i = 0; i < 3; ++i)
        DestroyDeviceIdentifier(instance, false);
    EXPECT_EQ(LiveInstancesAtEnd(log.text()), 1);
    DestroyDeviceIdentifier(instance, false);
    EXPECT_EQ(LiveInstancesAtEnd(log.text()), 0);
}

// Every line "<prefix>| <thread> <sequence> <x...>" is the writer's whole line:
// its thread's text and the full payload (cut only at the 4,096-byte line
// buffer), in the thread's order, none missing, nothing of another line inside.
void ExpectWholeLines(const std::string& text, const std::string& prefix, int threads, int perThread, std::size_t longest)
{
    std::vector<int> next(threads, 0);
    int total = 0;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        // The logger's own lines start with the prefix; the process log's follow a time stamp.
        const std::size_t bar = line.find(prefix);
        if (line.find("| ") == std::string::npos || (prefix[0] == ' ' && bar == std::string::npos))
            continue;
        std::istringstream fields(bar == std::string::npos ? "" : line.substr(bar + prefix.size()));
        int thread = -1, sequence = -1;
        std::string payload;
        const bool parsed = (fields >> thread >> sequence) && fields.get() == ' ';
        std::getline(fields, payload);
        ASSERT_TRUE(parsed && (bar == 0 || prefix[0] == ' ') && thread >= 0 && thread < threads &&
                    payload.find_first_not_of('x') == std::string::npos)
            << "broken line: " << line.substr(0, 120);
        EXPECT_EQ(sequence, next[thread]++) << "lines of one thread out of order";
        const std::size_t wanted = static_cast<std::size_t>(sequence * 97) % longest;
        EXPECT_TRUE(payload.size() == wanted || (payload.size() < wanted && line.size() >= 4094)) << payload.size() << " not " << wanted;
        ++total;
    }
    EXPECT_EQ(total, threads * perThread);
}

std::string Payload(int i, std::size_t longest)
{
    return std::string(static_cast<std::size_t>(i * 97) % longest, 'x');
}

TEST(LoggerStress, LinesFromManyThreadsStayWhole)
{
    devid_test::TempDir dir;
    {
        MORA_LUX::uLogger logger(dir.file("stress.txt").c_str(), true);
        RunThreads(8, [&](int t) {
            for (int i = 0; i < 300; ++i)
                logger.Log(1, MORA_LUX::uLogger::TD_NONE, "| %d %d %s", t, i, Payload(i, 6000).c_str());
        });
    }
    ExpectWholeLines(devid_test::readFile(dir.file("stress.txt")), "M      | ", 8, 300, 6000);

    // The process log's lines carry a time stamp before the same text.
    devid_test::ProcessLog log;
    DestroyDeviceIdentifier(CreateDeviceIdentifier(), false);
    RunThreads(6, [&](int t) {
        for (int i = 0; i < 200; ++i)
            DevIdLog(1, "| %d %d %s", t, i, Payload(i, 3000).c_str());
    });
    ExpectWholeLines(log.text(), " | | ", 6, 200, 3000);
}

} // namespace
