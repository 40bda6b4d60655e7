#include <gtest/gtest.h>

#include "monitors/nettraffic/TrafficLines.h"

namespace vostel {
namespace {

std::string shown(const std::optional<std::vector<ProcessTraffic>>& result) {
    if (!result) return "none";
    std::string text;
    for (const ProcessTraffic& row : *result) {
        char buffer[200];
        std::snprintf(buffer, sizeof buffer, "%s.%d %.6g %.6g;", row.name.c_str(), row.pid,
                      row.down, row.up);
        text += buffer;
    }
    return text;
}

TEST(TrafficLinesTest, Rows) {
    const struct {
        const char* line;
        const char* expected;
    } rows[] = {
        {"firefox.123,45,67", "firefox|123|45|67"},
        {"Web Content.7,1,2,", "Web Content|7|1|2"},  // an empty last field
        {"node.js.9 10 11", "node.js|9|10|11"},       // the pid follows the last dot
        {"a,b.5,1,18446744073709551615", "a,b|5|1|18446744073709551615"},
        {"12:00:01.5,curl.8,1,2\r", "curl|8|1|2"},  // a clock time before the name
        {"timedatectl.3,1,2", "timedatectl|3|1|2"},
        {"curl.8,1,18446744073709551616", ""},  // more than 64 bits
        {"curl.8,-1,2", ""},
        {"curl.8,1", ""},
        {"curl,1,2", ""},
        {"curl.99999999999,1,2", ""},
        {"curl.-4,1,2", ""},
        {"time,12:34:56.5,bytes_in,bytes_out", ""},
        {",,,", ""},
        {"", ""},
    };
    for (const auto& row : rows) {
        const auto parsed = parseTrafficRow(row.line);
        const std::string text =
            parsed ? std::string(parsed->name) + "|" + std::to_string(parsed->pid) + "|" +
                         std::to_string(parsed->bytesIn) + "|" + std::to_string(parsed->bytesOut)
                   : "";
        EXPECT_EQ(text, row.expected) << row.line;
    }
}

TEST(TrafficLinesTest, ClockTimes) {
    EXPECT_DOUBLE_EQ(parseClockTime("time,01:02:03.250000,x").value_or(-1), 3723.25);
    EXPECT_DOUBLE_EQ(parseClockTime("time  23:59:60").value_or(-1), 86400);
    for (const char* line : {"time", "24:00:00", "1:02:03", "12:3x:00", "::::::", "12:34:5"}) {
        EXPECT_FALSE(parseClockTime(line)) << line;
    }
}

// Each row: the interval, the output of a helper, and the result of its last block.
TEST(TrafficLinesTest, BlocksBecomeRates) {
    const struct {
        const char* fault;
        double interval;
        const char* output;
        const char* expected;
    } rows[] = {
        {"rates out of one block", 1, "time,10:00:00,\na.1,100,200\ntime,10:00:01,\n", "none"},
        {"time difference not used", 1,
         "time,10:00:00.0,\na.1,100,200\ntime,10:00:00.5,\na.1,200,600\ntime,10:00:01.0,\n",
         "a.1 200 800;"},
        {"division by zero", 2, "time,10:00:00,\na.1,0,0\ntime,10:00:00,\na.1,8,2\ntime,1,\n",
         "a.1 4 1;"},
        {"an interval of 0.1 with equal times: not below 0.25 s", 0.1,
         "time,10:00:00,\na.1,0,0\ntime,10:00:00,\na.1,8,0\ntime,1,\n", "a.1 32 0;"},
        {"an interval of 0.1 with blocks a second apart is no gap", 0.1,
         "time,10:00:00,\na.1,0,0\ntime,10:00:01,\na.1,8,0\ntime,1,\n", "a.1 8 0;"},
        {"a negative time over midnight", 2,
         "time,23:59:59,\na.1,0,0\ntime,00:00:01,\na.1,8,0\ntime,1,\n", "a.1 4 0;"},
        {"an interval of 0.25 taken for the second over midnight", 0.25,
         "time,23:59:59.5,\na.1,0,0\ntime,00:00:00.5,\na.1,8,0\ntime,1,\n", "a.1 8 0;"},
        {"a block that was late, over midnight", 1,
         "time,23:59:59.0,\na.1,0,0\ntime,00:00:01.5,\na.1,5,0\ntime,1,\n", "a.1 2 0;"},
        {"a burst after a suspend over midnight", 1,
         "time,22:00:00,\na.1,0,0\ntime,06:00:00,\na.1,8000,0\ntime,06:00:01,\n", ""},
        {"a burst after a clock that was set back", 1,
         "time,10:00:00,\na.1,0,0\ntime,09:00:00,\na.1,8000,0\ntime,09:00:01,\n", ""},
        {"headers without a clock time", 4, "time\na.1,0,0\ntime\na.1,8,0\ntime\n", "a.1 2 0;"},
        {"a burst after a suspend", 1,
         "time,10:00:00,\na.1,0,0\ntime,10:00:04,\na.1,8000,0\ntime,10:00:05,\n", ""},
        {"a pid given out anew gives negative rates", 1,
         "time,10:00:00,\na.1,900,900\nb.2,0,0\ntime,10:00:01,\na.1,5,5\nb.2,1,0\ntime,1,\n",
         "b.2 1 0;"},
        {"a new process counts what it had before", 1,
         "time,10:00:00,\na.1,0,0\ntime,10:00:01,\na.1,1,0\nb.2,999,999\ntime,1,\n", "a.1 1 0;"},
        {"a wrong order", 1,
         "time,10:00:00,\na.1,0,0\nb.2,0,0\nc.3,0,0\nd.4,7,7\n"
         "time,10:00:01,\na.1,1,1\nb.2,0,9\nc.3,2,0\nd.4,7,7\n# end\n",
         "b.2 0 9;a.1 1 1;c.3 2 0;"},
        {"the end mark counts the block twice", 1,
         "time,10:00:00,\na.1,0,0\n# end\ntime,10:00:01,\na.1,6,0\n# end\na.1,99,0\n", "a.1 6 0;"},
        {"a name that begins like a header", 1,
         "time,10:00:00,\ntimed.1,0,0\ntime,10:00:01,\ntimed.1,6,0\n# end\n", "timed.1 6 0;"},
        {"rows before the first header", 1, "a.1,5,5\n# end\na.1,9,9\ntime,10:00:00,\n", "none"},
    };
    for (const auto& row : rows) {
        TrafficLines whole(row.interval);
        TrafficLines bytewise(row.interval);
        std::optional<std::vector<ProcessTraffic>> last;
        for (const char* at = row.output; *at != '\0'; ++at) {
            if (auto result = bytewise.feed({at, 1})) last = result;
        }
        EXPECT_EQ(shown(whole.feed(row.output)), row.expected) << row.fault;
        EXPECT_EQ(shown(last), row.expected) << row.fault << ", byte by byte";
    }
}

TEST(TrafficLinesTest, GarbageIsSkippedAndTheNextReadingWorks) {
    TrafficLines lines(1);
    lines.feed("# sight=own closed=none\ntime,10:00:00,\na.1,0,0\n");
    const std::string garbage(1 << 20, '\xff');
    for (int count = 0; count < 100; ++count) {
        lines.feed(garbage);  // 100 MiB without an end of line
    }
    std::string block =
        "\ntime,10:00:01,\na.1,6,0\n\xff\xfe.2,x,y\n" + std::string(5000, 'n') + ".3,1,1\n";
    for (int pid = 100; pid < 20'000; ++pid) {
        block += "p." + std::to_string(pid) + ",1,1\n";
    }
    EXPECT_EQ(shown(lines.feed(block + "# end\n")), "a.1 6 0;");
    EXPECT_EQ(lines.sight(), "sight=own closed=none");
    const auto next = lines.feed("time,10:00:02,\na.1,7,0\np.150,9,9\np.19000,9,9\n# end\n");
    EXPECT_EQ(shown(next), "p.150 8 8;a.1 1 0;") << "row 19000 of a block must not be kept";
    std::string many = "time,10:00:03,\n";
    for (int pid = 100; pid < 130; ++pid) {
        many += "p." + std::to_string(pid) + ",10,10\n";
    }
    lines.feed(many + "# end\n");
    for (std::size_t at = many.find(",10,10"); at != std::string::npos; at = many.find(",10,10")) {
        many.replace(at, 6, ",20,20");
    }
    EXPECT_EQ(lines.feed(many + "# end\n")->size(), TrafficLines::mostDelivered);
}

}  // namespace
}  // namespace vostel
