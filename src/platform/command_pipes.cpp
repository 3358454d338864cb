// The commands that were started and not collected yet. Nobody has to wait for one that takes its
// time or never ends: it lingers without a pipe until it is seen to have ended. One that was
// released is the user's and is never ended; one that was abandoned always is.
#include <algorithm>
#include <chrono>
#include <list>
#include <map>
#include <mutex>
#include <new>
#include <thread>

#include "platform/command.h"
#include "platform/process.h"

namespace vistel::platform {

namespace {

using Clock = std::chrono::steady_clock;

// When so many released commands linger, the next one has to wait for its turn.
constexpr ptrdiff_t mostLingering = 8;
// A command that was told to end and has not after this time is made to.
constexpr std::chrono::seconds patience{1};
// How long the end of the program waits for commands that were told to end.
constexpr std::chrono::milliseconds lastPatience{500};

enum class Leaving { released, abandoned };

struct Lingering {
    Command command;
    Leaving leaving;
    Clock::time_point since;  // when it was left, or made to end for the last time
};

// An abandoned command has ended when all that it has started has: until then the system must keep
// what that is known by.
bool collectIfEnded(Lingering& entry) {
    if (entry.leaving == Leaving::abandoned && !familyHasEnded(entry.command)) return false;
    return collect(entry.command, 0).has_value();
}

class Commands {
 public:
    Commands() = default;
    ~Commands();
    Commands(const Commands&) = delete;
    Commands& operator=(const Commands&) = delete;

    FILE* start(const std::string& text, bool reading, CommandErrors errors);
    // The command behind a stream, which then is the caller's.
    std::optional<Command> take(FILE* stream);
    // Whether no more released commands should linger.
    bool full();
    // Takes a command that was hung up.
    void linger(Command& command, Leaving leaving);
    void end(FILE* stream) {
        const std::lock_guard lock(mutex_);
        const auto entry = byStream_.find(stream);
        if (entry != byStream_.end()) endFamily(entry->second, true);
    }
    void tidy() {
        const std::lock_guard lock(mutex_);
        collectEnded();
    }

 private:
    void collectEnded();
    void endAbandoned();

    std::mutex mutex_;
    std::map<FILE*, Command> byStream_;
    std::list<Lingering> lingering_;  // in the order in which they were left
};

Commands& commands() {
    static Commands all;
    return all;
}

void Commands::collectEnded() {
    std::erase_if(lingering_, collectIfEnded);
    const Clock::time_point now = Clock::now();
    for (Lingering& entry : lingering_) {
        if (entry.leaving == Leaving::released || now - entry.since <= patience) continue;
        endFamily(entry.command, true);
        entry.since = now;
    }
}

FILE* Commands::start(const std::string& text, bool reading, CommandErrors errors) {
    const std::lock_guard lock(mutex_);
    collectEnded();
    std::map<FILE*, Command> started;
    Command& command = started[nullptr];  // whatever memory it takes is there before it runs
    if (!startCommand(text, reading, errors, command)) return nullptr;
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

bool Commands::full() {
    const std::lock_guard lock(mutex_);
    collectEnded();
    return mostLingering <=
           std::count_if(lingering_.begin(), lingering_.end(),
                         [](const Lingering& entry) { return entry.leaving == Leaving::released; });
}

// Without memory for it a command ends when it likes, and is collected with the program.
void Commands::linger(Command& command, Leaving leaving) try {
    const std::lock_guard lock(mutex_);
    if (leaving == Leaving::abandoned) endFamily(command, false);
    lingering_.push_back({command, leaving, Clock::now()});
    collectEnded();
} catch (const std::bad_alloc&) {
}

// None of the abandoned is left behind, and those whose reader has gone without a word are told to
// end (their streams may be closed already). What was released goes on by itself.
void Commands::endAbandoned() {
    std::erase_if(lingering_,
                  [](const Lingering& entry) { return entry.leaving == Leaving::released; });
    for (auto& [stream, command] : byStream_)
        if (command.reading) endFamily(command, false);
    const Clock::time_point end = Clock::now() + lastPatience;
    for (Lingering& entry : lingering_) {
        bool ended = collectIfEnded(entry);
        while (!ended && Clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            ended = collectIfEnded(entry);
        }
        if (!ended) endFamily(entry.command, true);
    }
}

Commands::~Commands() {
    try {
        endAbandoned();
    } catch (const std::bad_alloc&) {  // without memory nobody can be told
    }
}

}  // namespace

FILE* openPipe(const std::string& command, const char* mode, CommandErrors errors) {
    return commands().start(command, mode[0] == 'r', errors);
}

int closePipe(FILE* pipe) {
    return closePipe(pipe, [] { return true; });
}

int closePipe(FILE* pipe, const GoOn& goOn) {
    std::optional<Command> command = commands().take(pipe);
    if (!command) return -1;
    hangUp(*command);
    for (;;) {
        if (const std::optional<int> status = collect(*command, 1)) return *status;
        if (goOn()) continue;
        commands().linger(*command, Leaving::abandoned);
        return -1;
    }
}

void releasePipe(FILE* pipe, const GoOn& goOn) {
    std::optional<Command> command = commands().take(pipe);
    if (!command) return;
    hangUp(*command);
    if (collect(*command, 0)) return;
    while (goOn && commands().full() && goOn())
        if (collect(*command, 1)) return;
    commands().linger(*command, Leaving::released);
}

void endCommand(FILE* pipe) { commands().end(pipe); }

void collectEndedCommands() { commands().tidy(); }

void abandonPipe(FILE* pipe) {
    std::optional<Command> command = commands().take(pipe);
    if (!command) return;
    hangUp(*command);
    commands().linger(*command, Leaving::abandoned);
}

}  // namespace vistel::platform
