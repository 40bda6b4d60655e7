// The real helper on real sockets: programs in two network namespaces joined by a pair of virtual
// Ethernet devices. Needs root, iproute2 and /sys.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>

#include "Descriptor.h"
#include "monitors/nettraffic/TrafficLines.h"

namespace vostel::nettop {
namespace {

constexpr int port = 5001;
constexpr long megabyte = 1'000'000;

// A child process, killed and reaped with its owner.
class Child {
  public:
    explicit Child(const std::function<void()>& body) : pid(fork()) {
        if (pid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            body();
            _exit(0);
        }
    }
    Child(Child&& other) noexcept : pid(std::exchange(other.pid, -1)) {}
    ~Child() {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }
    void wait() { waitpid(std::exchange(pid, -1), nullptr, 0); }
    pid_t pid;
};

// A network namespace that nothing names: neither its making nor its use needs a mount.
Descriptor newNamespace() {
    const Descriptor own(open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(unshare(CLONE_NEWNET), 0) << "this kernel makes no network namespaces";
    Descriptor made(open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(setns(own.get(), CLONE_NEWNET), 0);
    return made;
}

// Two namespaces, 10.9.0.1 and fd09::1 in the first, 10.9.0.2 and fd09::2 in the second.
class NettopRealTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(geteuid(), 0u) << "the namespaces of this test need root";
        ASSERT_NO_FATAL_FAILURE(findTracepoints());
        spaces.emplace("A", newNamespace());
        spaces.emplace("B", newNamespace());
        const std::string other =
            "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(spaces.at("B").get());
        const std::pair<const char*, std::string> lines[] = {
            {"A", "link add vtA type veth peer name vtB netns " + other},
            {"A", "addr add 10.9.0.1/24 dev vtA"},
            {"A", "addr add fd09::1/64 dev vtA nodad"},
            {"A", "link set vtA up"},
            {"A", "link set lo up"},
            {"B", "addr add 10.9.0.2/24 dev vtB"},
            {"B", "addr add fd09::2/64 dev vtB nodad"},
            {"B", "link set vtB up"},
            {"B", "link set lo up"},
        };
        for (const auto& [space, line] : lines) {
            int status = -1;
            Child ip([&] {
                enter(space);
                _exit(std::system(("ip " + line).c_str()) == 0 ? 0 : 1);
            });
            waitpid(std::exchange(ip.pid, -1), &status, 0);
            ASSERT_EQ(status, 0) << "ip " << line;
        }
    }
    static void TearDownTestSuite() { spaces.clear(); }
    // Where they are not mounted yet, they are for this process alone.
    static void findTracepoints() {
        if (access("/sys/kernel/tracing/events", F_OK) == 0) return;
        ASSERT_EQ(unshare(CLONE_NEWNS), 0);
        // Not "/": in a root that was only changed into, that is no mount point.
        ASSERT_EQ(mount(nullptr, "/sys", nullptr, MS_REC | MS_PRIVATE, nullptr), 0)
            << "the tracepoints need /sys: mount -t sysfs sysfs /sys";
        ASSERT_EQ(mount("none", "/sys/kernel/tracing", "tracefs", 0, nullptr), 0)
            << "this kernel has no tracepoints";
    }
    static void enter(const char* space) {
        if (setns(spaces.at(space).get(), CLONE_NEWNET) != 0) _exit(9);
    }
    // A server in B that reads all it gets, on every address.
    static Child server() {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        Child child([&] {
            prctl(PR_SET_NAME, "vt-server");
            enter("B");
            const int listener = socket(AF_INET6, SOCK_STREAM, 0);
            sockaddr_in6 address{};
            address.sin6_family = AF_INET6;
            address.sin6_port = htons(port);
            if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
                listen(listener, 100) != 0 || write(ready[1], "x", 1) != 1) {
                _exit(9);
            }
            std::vector<pollfd> polls{{listener, POLLIN, 0}};
            std::vector<char> buffer(1 << 16);
            while (poll(polls.data(), polls.size(), -1) >= 0) {
                if (polls[0].revents != 0) {
                    polls.push_back({accept(listener, nullptr, nullptr), POLLIN, 0});
                }
                for (std::size_t at = polls.size() - 1; at > 0; --at) {
                    if (polls[at].revents != 0 &&
                        read(polls[at].fd, buffer.data(), buffer.size()) <= 0) {
                        close(polls[at].fd);
                        polls.erase(polls.begin() + static_cast<std::ptrdiff_t>(at));
                    }
                }
            }
        });
        char byte = 0;
        EXPECT_EQ(read(ready[0], &byte, 1), 1);
        close(ready[0]);
        close(ready[1]);
        return child;
    }
    // Sends `total` bytes over `connections`, one after the other, with a pause after every 50 kB.
    static void sendAll(const char* host, long total, int connections, int pauseMilliseconds) {
        const std::vector<char> data(50'000);
        const bool six = std::string_view(host).find(':') != std::string_view::npos;
        for (int count = 0; count < connections; ++count) {
            const int out = socket(six ? AF_INET6 : AF_INET, SOCK_STREAM, 0);
            sockaddr_in6 address6{AF_INET6, htons(port), 0, {}, 0};
            sockaddr_in address4{AF_INET, htons(port), {}, {}};
            inet_pton(six ? AF_INET6 : AF_INET, host,
                      six ? static_cast<void*>(&address6.sin6_addr)
                          : static_cast<void*>(&address4.sin_addr));
            const auto* address = six ? reinterpret_cast<sockaddr*>(&address6)
                                      : reinterpret_cast<sockaddr*>(&address4);
            if (connect(out, address, six ? sizeof address6 : sizeof address4) != 0) _exit(9);
            for (long sent = 0; sent < total / connections; sent += 50'000) {
                if (write(out, data.data(), data.size()) != 50'000) _exit(9);
                usleep(static_cast<useconds_t>(pauseMilliseconds) * 1000);
            }
            close(out);
        }
    }
    // The helper in namespace `space`, its output in a pipe.
    struct Helper {
        Child child;
        Descriptor output;
    };
    static Helper helper(const char* space, uid_t user) {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        Helper made{Child([&] {
                        enter(space);
                        const int program = open(NETTOP, O_RDONLY);
                        dup2(ends[1], STDOUT_FILENO);
                        if (user != 0 && setresuid(user, user, user) != 0) _exit(9);
                        const char* words[] = {NETTOP, "-P", "-x", "-J", "bytes_in,bytes_out",
                                               "-l",   "0",  "-s", "1",  nullptr};
                        fexecve(program, const_cast<char**>(words), environ);
                    }),
                    Descriptor(ends[0])};
        close(ends[1]);
        return made;
    }
    // What the helper prints, block by block.
    struct Record {
        std::map<std::string, std::pair<long, long>> totals;      // of the last block, by name
        std::map<std::string, std::pair<double, double>> flowed;  // rates times seconds
        std::string sight;
        int blocks = 0;
    };
    static void follow(const Helper& source, int blocks, Record& record) {
        TrafficLines lines(1);
        std::string line;
        std::map<int, std::pair<long, long>> before;
        for (const int end = record.blocks + blocks; record.blocks < end;) {
            char byte = 0;
            ASSERT_EQ(read(source.output.get(), &byte, 1), 1) << "the helper ended";
            if (const auto rates = lines.feed({&byte, 1})) {
                for (const ProcessTraffic& row : *rates) {
                    record.flowed[row.name].first += row.down;
                    record.flowed[row.name].second += row.up;
                }
            }
            if (byte != '\n') {
                line += byte;
                continue;
            }
            if (const auto row = parseTrafficRow(line)) {
                const std::pair now(static_cast<long>(row->bytesIn),
                                    static_cast<long>(row->bytesOut));
                EXPECT_GE(now.first, before[row->pid].first) << line << ": went backwards";
                EXPECT_GE(now.second, before[row->pid].second) << line << ": went backwards";
                before[row->pid] = now;
                record.totals[std::string(row->name)] = now;
            }
            record.blocks += line == "# end" ? 1 : 0;
            line.clear();
        }
        record.sight = lines.sight();
    }

    static inline std::map<std::string, Descriptor> spaces;
};

TEST_F(NettopRealTest, ShowsTheBytesOfProgramsThatComeAndGo) {
    const Child receiver = server();
    const Helper nettop = helper("A", 0);
    Record record;
    ASSERT_NO_FATAL_FAILURE(follow(nettop, 1, record));
    const struct {
        const char* name;
        const char* host;
        int connections;
        int pause;  // milliseconds after each 50 kB
    } programs[] = {
        {"vt-paced", "10.9.0.2", 1, 25},  // lives for 2.5 s
        {"vt-quick", "10.9.0.2", 1, 0},   // gone within some milliseconds
        {"vt-many", "10.9.0.2", 20, 0},
        {"vt-pacedmany", "10.9.0.2", 10, 20},
        {"vt-six", "fd09::2", 4, 5},
        {"vt-local", "10.9.0.1", 1, 0},  // its own address: no network traffic
    };
    std::vector<Child> running;
    running.emplace_back([] {  // what vt-local talks to
        prctl(PR_SET_NAME, "vt-local");
        enter("A");
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{AF_INET, htons(port), {}, {}};
        if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) _exit(9);
        listen(listener, 5);
        const int connection = accept(listener, nullptr, nullptr);
        std::vector<char> buffer(1 << 16);
        while (read(connection, buffer.data(), buffer.size()) > 0) {
        }
        pause();
    });
    usleep(200'000);
    for (const auto& program : programs) {
        running.emplace_back([&] {
            prctl(PR_SET_NAME, program.name);
            enter("A");
            sendAll(program.host, 5 * megabyte, program.connections, program.pause);
        });
    }
    for (std::size_t index = 1; index < running.size(); ++index)
        running[index].wait();
    ASSERT_NO_FATAL_FAILURE(follow(nettop, 4, record));

    EXPECT_EQ(record.sight, "sight=all closed=all namespaces=all");
    for (const auto& program : programs) {
        const long expected = std::string_view(program.name) == "vt-local" ? 0 : 5 * megabyte;
        EXPECT_NEAR(static_cast<double>(record.totals[program.name].second),
                    static_cast<double>(expected), 0.02 * static_cast<double>(expected))
            << program.name;
    }
    EXPECT_NEAR(static_cast<double>(record.totals["vt-server"].first), 25.0 * megabyte,
                0.5 * megabyte);
    EXPECT_NEAR(record.flowed["vt-quick"].second, 5.0 * megabyte, 0.25 * megabyte)
        << "a reader of differences must get the bytes of a program that came and went";
}

TEST_F(NettopRealTest, WithoutRightsItShowsTheUsersOwnProcesses) {
    constexpr uid_t nobody = 65534;
    const Child receiver = server();
    const Helper nettop = helper("A", nobody);
    Record record;
    ASSERT_NO_FATAL_FAILURE(follow(nettop, 1, record));
    std::vector<Child> running;
    for (const uid_t user : {nobody, uid_t{0}}) {
        running.emplace_back([user] {
            prctl(PR_SET_NAME, user == 0 ? "vt-root" : "vt-nobody");
            enter("A");
            if (user != 0 && setresuid(user, user, user) != 0) _exit(9);
            prctl(PR_SET_DUMPABLE, 1);  // as a program of this user that was just started
            sendAll("10.9.0.2", 5 * megabyte, 2, 25);  // each seen by some reading
            pause();
        });
    }
    ASSERT_NO_FATAL_FAILURE(follow(nettop, 5, record));
    EXPECT_EQ(record.sight, "sight=own closed=some namespaces=own");
    EXPECT_NEAR(static_cast<double>(record.totals["vt-nobody"].second), 5.0 * megabyte,
                0.1 * megabyte);
    EXPECT_FALSE(record.totals.contains("vt-root"));
    EXPECT_FALSE(record.totals.contains("vt-server"));
}

// True once the process is gone, or a zombie that nobody has reaped.
bool ended(pid_t pid) {
    for (int count = 0; count < 1000; ++count) {
        char state = 'X';
        if (FILE* file = fopen(("/proc/" + std::to_string(pid) + "/stat").c_str(), "r")) {
            if (fscanf(file, "%*d (%*[^)]) %c", &state) != 1) state = 'X';
            fclose(file);
        }
        if (state == 'X' || state == 'Z') return true;
        usleep(10'000);
    }
    return false;
}

TEST_F(NettopRealTest, EndsWithItsParentAndWithItsReader) {
    int report[2];
    ASSERT_EQ(pipe(report), 0);
    Child parent([&] {
        const pid_t child = fork();
        if (child == 0) {
            dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
            execl(NETTOP, NETTOP, "-s", "3600", nullptr);
        }
        if (write(report[1], &child, sizeof child) < 0) _exit(9);
        pause();
    });
    pid_t orphan = 0;
    ASSERT_EQ(read(report[0], &orphan, sizeof orphan), static_cast<ssize_t>(sizeof orphan));
    usleep(300'000);
    EXPECT_EQ(kill(orphan, 0), 0) << "it ended by itself";
    kill(parent.pid, SIGKILL);
    parent.wait();
    EXPECT_TRUE(ended(orphan));

    Helper nettop = helper("A", 0);
    Record record;
    follow(nettop, 1, record);
    nettop.output = Descriptor();
    EXPECT_TRUE(ended(nettop.child.pid)) << "nobody reads any more";
}

}  // namespace
}  // namespace vostel::nettop
