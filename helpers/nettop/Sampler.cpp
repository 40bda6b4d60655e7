#include "Sampler.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace vostel::nettop {

namespace {

constexpr std::size_t maximumNamespaces = 256;    // open at once
constexpr std::size_t namespacesPerReading = 16;  // beside our own; more are taken in turns
constexpr std::size_t checkParts = 64;  // each held socket is checked once in so many readings

bool hasCapability(unsigned capability) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    return syscall(SYS_capget, &header, data) == 0 &&
           (data[capability / 32].effective >> (capability % 32) & 1U) != 0;
}

// Searches for holders take at most this share of one processor, but are never put off for longer
// than `longestWait` seconds. What a socket carries until then is not lost.
constexpr double searchShare = 0.002;
constexpr double longestWait = 3;

double processorSeconds() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

// Namespaces with a name outlive their processes (ip-netns(8)). They are read also while they have
// none, because a program may come and go there between two readings.
constexpr const char* namedFolder = "/run/netns";

void addNamed(std::map<ino_t, std::string>& paths) {
    DIR* listing = opendir(namedFolder);
    while (const dirent* item = listing != nullptr ? readdir(listing) : nullptr) {
        const std::string path = std::string(namedFolder) + "/" + item->d_name;
        struct stat status{};
        if (item->d_name[0] != '.' && stat(path.c_str(), &status) == 0) {
            paths.emplace(status.st_ino, path);
        }
    }
    if (listing != nullptr) {
        closedir(listing);
    }
}

bool staysHere(const SocketReading& reading, const std::vector<Address>& own) {
    const Address& remote = reading.remote.address;
    return isLoopback(remote) || remote == reading.local.address ||
           std::binary_search(own.begin(), own.end(), remote);
}

}  // namespace

Sampler::Sampler(const std::string& root)
    : processes(root),
      procRoot(root),
      home(::open((root + "/self/ns/net").c_str(), O_RDONLY | O_CLOEXEC)),
      // Listing another user's descriptors takes the one, following them the other.
      seesAll(hasCapability(CAP_DAC_READ_SEARCH) && hasCapability(CAP_SYS_PTRACE)),
      entersOthers(hasCapability(CAP_SYS_ADMIN)) {
    struct stat status{};
    if (home && fstat(home.get(), &status) == 0) {
        homeInode = status.st_ino;
    }
    if (auto diag = SocketDiag::open()) {
        spaces.emplace(homeInode, Space{++lastId, std::move(*diag)});
    }
}

void Sampler::openNamespaces(double now) {
    std::map<ino_t, std::string> wanted;
    if (entersOthers) {
        for (const auto& [inode, pid] : processes.namespaces()) {
            wanted.emplace(inode, procRoot + "/" + std::to_string(pid) + "/ns/net");
        }
        addNamed(wanted);
    }
    // An open socket keeps a namespace alive: let go of those that nothing else needs any more.
    for (auto entry = spaces.begin(); entry != spaces.end();) {
        auto& [inode, space] = *entry;
        if (inode == homeInode || wanted.contains(inode)) {
            ++entry;
            continue;
        }
        readNamespace(space, now);
        ended.push_back(space.id);
        entry = spaces.erase(entry);
    }
    for (const auto& [inode, path] : wanted) {
        if (spaces.contains(inode) || refused.contains(inode) || !home ||
            spaces.size() >= maximumNamespaces) {
            continue;
        }
        const Descriptor target(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        if (!target) {
            continue;  // the process has just gone
        }
        if (setns(target.get(), CLONE_NEWNET) != 0) {
            refused.insert(inode);
            continue;
        }
        auto diag = SocketDiag::open();
        if (setns(home.get(), CLONE_NEWNET) != 0) {
            std::abort();  // lost in a foreign namespace: every further figure would be wrong
        }
        if (diag) {
            spaces.emplace(inode, Space{++lastId, std::move(*diag)});
        }
    }
}

void Sampler::readNamespace(Space& space, double now) {
    const std::vector<Address>& own = space.diag.ownAddresses(now);
    const auto collect = [&](const SocketReading& reading) {
        if (!reading.listening && !staysHere(reading, own)) {
            closed.push_back({space.id, reading});
        }
    };
    const bool whole = space.diag.dump([&](const SocketReading& reading) {
        if (reading.listening || !staysHere(reading, own)) {
            ledger.observe(space.id, reading);
        }
    });
    space.diag.drainClosed(collect);
    if (whole) {
        ledger.finishNamespace(space.id, space.diag.noticesClosing());
    }
}

void Sampler::checkHolders() {
    for (const HeldSocket& socket : ledger.held(readings % checkParts, checkParts)) {
        if (!processes.stillHolds(socket)) {
            ledger.release(socket.inode);
        }
    }
}

void Sampler::findHolders(double now) {
    if (now < nextSearch) {
        return;
    }
    auto wanted = ledger.wanted();
    if (!seesAll) {
        std::erase_if(wanted, [](const auto& entry) { return entry.second != geteuid(); });
    }
    if (wanted.empty()) {
        return;
    }
    const double before = processorSeconds();
    processes.search(
        std::move(wanted), ledger.knownDescriptors(),
        [&](std::uint32_t inode, const Holder& holder) { ledger.hold(inode, holder); });
    ledger.searched();
    if (readings == 0) {
        return;  // the first search looks at everything, and only once
    }
    nextSearch = now + std::min((processorSeconds() - before) / searchShare, longestWait);
}

void Sampler::settleClosed() {
    for (const Closed& socket : closed) {
        std::optional<Holder> opener = tracer.openerOf(socket.reading.local, socket.reading.remote);
        std::optional<Holder> known = opener ? processes.identify(opener->pid) : std::nullopt;
        const bool lives = known.has_value();
        if (opener && !known) {
            known = processes.remembered(opener->pid);
        }
        if (opener && known && (opener->name.empty() || lives)) {
            opener = known;
        }
        ledger.observeClosed(socket.space, socket.reading, opener);
        if (opener && !lives) {
            ledger.processGone(opener->pid);
        }
    }
    closed.clear();
}

void Sampler::read(double now) {
    const std::vector<int> gone = processes.refresh();
    openNamespaces(now);
    std::size_t others = 0;
    // Our own, and of the others those whose turn it is.
    std::vector<ino_t> turn{homeInode};
    for (auto next = spaces.upper_bound(lastVisited); others < spaces.size(); ++others, ++next) {
        if (next == spaces.end()) {
            next = spaces.begin();
        }
        if (next->first != homeInode && turn.size() <= namespacesPerReading) {
            turn.push_back(next->first);
            lastVisited = next->first;
        }
    }
    for (const ino_t inode : turn) {
        readNamespace(spaces.at(inode), now);
    }
    for (const int pid : gone) {
        ledger.processGone(pid);
    }
    tracer.update();
    settleClosed();  // before the search: a descriptor that was closed may be another socket now
    checkHolders();
    findHolders(now);
    for (const NamespaceId space : ended) {
        ledger.forgetNamespace(space);
    }
    ended.clear();
    ledger.finishReading();
    ++readings;
}

std::vector<TrafficRow> Sampler::rows() {
    // A pid that was given out anew between two listings of /proc shows by its start time.
    for (const Holder& owner : ledger.owners()) {
        const auto now = processes.identify(owner.pid);
        if (!now || (owner.startTime != 0 && now->startTime != owner.startTime)) {
            ledger.processGone(owner.pid);
        }
    }
    return ledger.rows();
}

std::string Sampler::sight() const {
    const bool notices = works() && spaces.at(homeInode).diag.noticesClosing();
    return std::string("sight=") + (seesAll ? "all" : "own") + " closed=" +
           (!notices         ? "none"
            : tracer.works() ? "all"
                             : "some") +
           " namespaces=" + (entersOthers && seesAll ? "all" : "own");
}

}  // namespace vostel::nettop
