// The real kernel: two network namespaces joined by a virtual cable. In this one the cable is a
// port of a bridge with a VLAN on top (a macvlan where the kernel has no VLANs), so that every byte
// passes three interfaces. Only the clock is moved by hand.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "FakeNetwork.h"
#include "monitors/network/InterfaceInfo.h"
#include "monitors/network/InterfaceSelection.h"
#include "monitors/network/NetworkMonitor.h"
#include "platform/linux/NetlinkSource.h"

namespace vostel {
namespace {

// Datagrams, because TCP sends a segment again when its acknowledgement is late, and the counters
// rightly show it. So large that the headers, which the sender does not count, are 0.5 %.
constexpr std::size_t datagram = 8000;
constexpr int datagramsInStep = 125;
// Bytes sent each way in one second of the test's clock.
constexpr double step = datagram * datagramsInStep;
constexpr int steps = 20;
constexpr int port = 5001;

bool shell(const std::string& command) {
    return std::system(command.c_str()) == 0;
}

void setTimeLimit(int socket) {
    const timeval limit{.tv_sec = 20, .tv_usec = 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

sockaddr_in address(const char* text) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    inet_pton(AF_INET, text, &result.sin_addr);
    return result;
}

int boundSocket(const char* text) {
    const int result = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in own = address(text);
    EXPECT_EQ(bind(result, reinterpret_cast<const sockaddr*>(&own), sizeof own), 0);
    return result;
}

// A process in a namespace of its own that does as it is told: 'n' make the namespace, 'i' set up
// its end of the cable, 'c' connect, 's' send a step, 'r' receive one. Ends with the test.
class FarEnd {
  public:
    FarEnd() {
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0 &&
            (pid = fork()) == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            close(ends[0]);
            serve();
        }
        close(ends[1]);
        setTimeLimit(ends[0]);
    }
    ~FarEnd() {
        close(ends[0]);
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    FarEnd(const FarEnd&) = delete;
    FarEnd& operator=(const FarEnd&) = delete;

    bool run(char order) {
        bool well = false;
        return write(ends[0], &order, 1) == 1 && read(ends[0], &well, 1) == 1 && well;
    }

    pid_t pid = -1;

  private:
    [[noreturn]] void serve() {
        char order = 0;
        while (read(ends[1], &order, 1) == 1) {
            const bool well = obey(order);
            if (write(ends[1], &well, 1) != 1) {
                break;
            }
            if (order == 'e') {
                echo();
            }
        }
        _exit(0);
    }
    bool obey(char order) {
        switch (order) {
            case 'n':
                return unshare(CLONE_NEWNET) == 0;
            case 'i':
                return shell(
                    "ip link set vb up && "
                    "{ ip link add link vb name top type vlan id 5 2>/dev/null || "
                    "ip link add link vb name top type macvlan mode bridge; } && "
                    "ip addr add 10.9.5.2/24 dev top && ip link set top up");
            default:
                mirror = boundSocket("10.9.5.2");
                return true;
        }
    }
    void echo() {
        std::vector<char> block(datagram);
        sockaddr_in from{};
        for (;;) {
            socklen_t size = sizeof from;
            const ssize_t n = recvfrom(mirror, block.data(), block.size(), 0,
                                       reinterpret_cast<sockaddr*>(&from), &size);
            if (n > 0) {
                sendto(mirror, block.data(), static_cast<std::size_t>(n), 0,
                       reinterpret_cast<const sockaddr*>(&from), size);
            }
        }
    }

    int ends[2] = {-1, -1};
    int mirror = -1;
};

// A namespace for this process: as root, or as root of a user namespace of one's own.
bool enterNamespace() {
    if (unshare(CLONE_NEWNET) == 0) {
        return true;
    }
    const uid_t user = getuid();
    const gid_t group = getgid();
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
        return false;
    }
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    return true;
}

class NetworkNamespaceTest : public testing::Test {
  protected:
    // Before the first far end is made, which must stand in the same user namespace.
    static void SetUpTestSuite() { entered = enterNamespace(); }
    void SetUp() override {
        ASSERT_TRUE(entered)
            << "no network namespace can be made: run this as root, or on a kernel "
               "that lets users have namespaces";
        ASSERT_TRUE(far.run('n'));
        ASSERT_TRUE(
            shell("ip link set lo up && ip link add va mtu 9000 type veth peer name vb mtu "
                  "9000 netns " +
                  std::to_string(far.pid) +
                  " && ip link add br0 mtu 9000 type bridge && ip link set va master br0 && "
                  "{ ip link add link br0 name top type vlan id 5 2>/dev/null || "
                  "ip link add link br0 name top type macvlan mode bridge; } && "
                  "ip addr add 10.9.0.1/24 dev br0 && ip addr add 10.9.5.1/24 dev top && "
                  "ip link set va up && ip link set br0 up && ip link set top up"))
            << "the package iproute2 and the kernel's veth, bridge and macvlan are needed";
        ASSERT_TRUE(far.run('i'));
        ASSERT_TRUE(far.run('e'));
        connection = boundSocket("10.9.5.1");
        setTimeLimit(connection);
    }
    void TearDown() override {
        close(connection);
        shell("ip link del br0; ip link del va 2>/dev/null; ip link del vc 2>/dev/null");
    }
    // One step each way.
    void exchange() {
        const sockaddr_in other = address("10.9.5.2");
        std::vector<char> block(datagram);
        for (int i = 0; i < datagramsInStep; ++i) {
            ASSERT_EQ(sendto(connection, block.data(), block.size(), 0,
                             reinterpret_cast<const sockaddr*>(&other), sizeof other),
                      static_cast<ssize_t>(datagram));
            ASSERT_EQ(recv(connection, block.data(), block.size(), 0),
                      static_cast<ssize_t>(datagram));
        }
    }
    // One tick of an item in `automatic`, and beside it one in `all`.
    void tick() {
        clock.now += 1;
        const auto samples = monitor.sample(1);
        const auto addresses = InterfaceInfo::addresses(monitor.interfaces(), source.addresses());
        automatic.update(
            {samples, monitor.onceNames(), addresses, InterfaceMode::automatic, {}, {}});
        all.update({samples, monitor.onceNames(), addresses, InterfaceMode::all, {}, {}});
        for (const auto& [name, sample] : samples) {
            EXPECT_NE(name, "lo");
        }
    }
    const InterfaceState* find(const std::string& name) const {
        const auto& list = automatic.list();
        const auto state =
            std::find_if(list.begin(), list.end(), [&](const auto& row) { return row.id == name; });
        return state != list.end() ? &*state : nullptr;
    }

    static inline bool entered = false;
    FarEnd far;
    int connection = -1;
    HandClock clock;
    NetlinkSource source;
    NetworkMonitor monitor{source, clock};
    InterfaceSelection automatic;
    InterfaceSelection all;
};

TEST_F(NetworkNamespaceTest, RatesAndTotalsAreTheSendersAndCountedOnce) {
    tick();
    for (int i = 0; i < steps; ++i) {
        exchange();
        tick();
        EXPECT_NEAR(automatic.current().down, step, step * 0.03);
        EXPECT_NEAR(automatic.current().up, step, step * 0.03);
        EXPECT_GT(all.current().down, step * 1.9) << "without the rule bytes count twice";
    }
    EXPECT_NEAR(monitor.sessionDown(), step * steps, step * steps * 0.01);
    EXPECT_NEAR(monitor.sessionUp(), step * steps, step * steps * 0.01);
    for (const auto& [name, included] : {std::pair("va", true), {"br0", false}, {"top", false}}) {
        const InterfaceState* state = find(name);
        ASSERT_NE(state, nullptr) << name;
        EXPECT_EQ(state->included, included) << name;
    }
    EXPECT_EQ(find("br0")->lanIP, "10.9.0.1");
    EXPECT_EQ(find("top")->lanIP, "10.9.5.1");
}

TEST_F(NetworkNamespaceTest, InterfacesThatChangeGiveNoSpike) {
    const std::string pair = "type veth peer name other netns " + std::to_string(far.pid);
    ASSERT_TRUE(shell("ip link add small " + pair));
    exchange();
    tick();
    // The name of a busy interface goes to an idle one and the other way round, then an
    // interface is deleted and made again, then one with counters of its own disappears.
    const std::string changes[] = {
        "ip link set va down && ip link set va name vc && ip link set small name va",
        "ip link set va name small && ip link set vc name va",
        "ip link del small && ip link add small " + pair,
        "ip link del small",
    };
    const std::uint64_t before = monitor.sessionDown() + monitor.sessionUp();
    for (const std::string& change : changes) {
        ASSERT_TRUE(shell(change)) << change;
        tick();
        EXPECT_LT(all.current().down + all.current().up, 20'000) << change;
    }
    EXPECT_LT(monitor.sessionDown() + monitor.sessionUp() - before, 50'000u);
    EXPECT_EQ(find("small"), nullptr);
}

// Addresses are kept between readings: a change must show in the next one all the same.
TEST_F(NetworkNamespaceTest, AddressesThatChangeShowAtOnce) {
    const auto shown = [&] {
        tick();
        return InterfaceInfo::addresses(monitor.interfaces(), source.addresses())["br0"];
    };
    EXPECT_EQ(shown().ipv4, "10.9.0.1");
    ASSERT_TRUE(shell("ip addr add fd00:9::1/64 dev br0 nodad && ip addr del 10.9.0.1/24 dev br0"));
    EXPECT_EQ(shown().ipv4, std::nullopt);
    EXPECT_EQ(shown().ipv6Global, "fd00:9::1");
    ASSERT_TRUE(
        shell("for i in $(seq 2 200); do echo addr add 10.9.0.$i/24 dev br0; done | "
              "ip -batch -"));
    EXPECT_EQ(shown().ipv4, "10.9.0.200");
}

TEST_F(NetworkNamespaceTest, LoopbackTrafficIsNotCounted) {
    tick();
    const int out = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in self = address("127.0.0.1");
    const std::vector<char> block(10'000);
    for (int i = 0; i < 100; ++i) {
        ASSERT_GT(sendto(out, block.data(), block.size(), 0,
                         reinterpret_cast<const sockaddr*>(&self), sizeof self),
                  0);
        // The refusal of a datagram comes back as the error of the next call.
        int error = 0;
        socklen_t size = sizeof error;
        getsockopt(out, SOL_SOCKET, SO_ERROR, &error, &size);
    }
    close(out);
    tick();
    EXPECT_LT(all.current().down + all.current().up, 20'000);
}

}  // namespace
}  // namespace vostel
