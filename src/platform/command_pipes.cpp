// The commands that were started and not collected yet. Nobody has to wait for one that takes its
// time or never ends: it lingers without a pipe until it is seen to have ended.
#include <algorithm>
#include <chrono>
#include <list>
#include <map>
#include <mutex>
#include <new>

#include "platform/command.h"
#include "platform/process.h"

namespace vistel::platform {

namespace {

using Clock = std::chrono::steady_clock;

// Commands beyond so many that linger are ended, the oldest first.
constexpr size_t mostLingering = 8;
// A command that was told to end and has not after this time is made to.
constexpr std::chrono::seconds patience{1};
// How long the end of the program waits for commands that are about to end by themselves.
constexpr std::chrono::milliseconds lastPatience{500};

struct Lingering {
    Command command;
    std::optional<Clock::time_point> told;  // when it was told to end
};

class Commands {
 public:
    Commands() = default;
    ~Commands();
    Commands(const Commands&) = delete;
    Commands& operator=(const Commands&) = delete;

    FILE* start(const std::string& text, bool reading);
    // The command behind a stream, which then is the caller's.
    std::optional<Command> take(FILE* stream);
    // Takes a command that was hung up.
    void linger(const Command& command, bool tell);

 private:
    void collectEnded();
    static void tell(Lingering& entry);

    std::mutex mutex_;
    std::map<FILE*, Command> byStream_;
    std::list<Lingering> lingering_;  // in the order in which they were left
};

Commands& commands() {
    static Commands all;
    return all;
}

void Commands::tell(Lingering& entry) {
    endWithDescendants(entry.command, false);
    entry.told = Clock::now();
}

void Commands::collectEnded() {
    std::erase_if(lingering_,
                  [](Lingering& entry) { return collect(entry.command, 0).has_value(); });
    const Clock::time_point now = Clock::now();
    for (Lingering& entry : lingering_)
        if (entry.told && now - *entry.told > patience) endWithDescendants(entry.command, true);
}

FILE* Commands::start(const std::string& text, bool reading) {
    const std::lock_guard lock(mutex_);
    collectEnded();
    std::map<FILE*, Command> started;
    Command& command = started[nullptr];  // whatever memory it takes is there before it runs
    if (!startCommand(text, reading, command)) return nullptr;
    command.reading = reading;
    FILE* stream = command.stream;
    byStream_.erase(stream);  // of one that was closed as if it were a file
    auto entry = started.extract(nullptr);
    entry.key() = stream;
    byStream_.insert(std::move(entry));
    return stream;
}

std::optional<Command> Commands::take(FILE* stream) {
    const std::lock_guard lock(mutex_);
    const auto entry = byStream_.find(stream);
    if (entry == byStream_.end()) return std::nullopt;
    const Command command = entry->second;
    byStream_.erase(entry);
    return command;
}

// Without memory for it a command ends when it likes, and is collected with the program.
void Commands::linger(const Command& command, bool tellIt) try {
    const std::lock_guard lock(mutex_);
    lingering_.push_back({command, {}});
    if (tellIt) tell(lingering_.back());
    collectEnded();
    if (lingering_.size() <= mostLingering) return;
    const auto oldest = std::find_if(lingering_.begin(), lingering_.end(),
                                     [](const Lingering& entry) { return !entry.told; });
    if (oldest != lingering_.end()) tell(*oldest);
} catch (const std::bad_alloc&) {
}

// A command may still have to finish what it does after its picture. One that does not come to an
// end is not left behind.
Commands::~Commands() {
    // Whoever was still to read them has gone. Their streams may be closed already.
    for (const auto& [stream, command] : byStream_)
        if (command.reading) endWithDescendants(command, false);
    const Clock::time_point end = Clock::now() + lastPatience;
    while (!lingering_.empty() && Clock::now() < end) {
        if (collect(lingering_.front().command, 1)) lingering_.pop_front();
    }
    for (const Lingering& entry : lingering_)
        endWithDescendants(entry.command, entry.told.has_value());
}

}  // namespace

FILE* openPipe(const std::string& command, const char* mode) {
    return commands().start(command, mode[0] == 'r');
}

int closePipe(FILE* pipe) {
    return closePipe(pipe, [] { return true; });
}

int closePipe(FILE* pipe, const std::function<bool()>& goOn) {
    std::optional<Command> command = commands().take(pipe);
    if (!command) return -1;
    hangUp(*command);
    for (;;) {
        if (const std::optional<int> status = collect(*command, 1)) return *status;
        if (goOn()) continue;
        commands().linger(*command, true);
        return -1;
    }
}

void releasePipe(FILE* pipe) {
    std::optional<Command> command = commands().take(pipe);
    if (!command) return;
    hangUp(*command);
    if (!collect(*command, 0)) commands().linger(*command, false);
}

void abandonPipe(FILE* pipe) {
    std::optional<Command> command = commands().take(pipe);
    if (!command) return;
    hangUp(*command);
    if (!collect(*command, 0)) commands().linger(*command, true);
}

}  // namespace vistel::platform
