// The commands that were started and not collected yet. Nobody has to wait for one that takes its
// time or never ends: it lingers without a pipe until it is seen to have ended. One that was
// released goes on as long as the program does; one that was abandoned is ended.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <list>
#include <map>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "platform/command.h"
#include "platform/process.h"

namespace vistel::platform {

namespace {

using Clock = std::chrono::steady_clock;

// When so many released commands linger, the next one has to wait for its turn.
constexpr ptrdiff_t mostLingering = 8;
// A command that was told to end and has not after this time is made to.
constexpr std::chrono::seconds patience{1};
// How long the end of the program waits for commands that were told to end, and again for those
// that had to be made to.
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
    // Ends one that is being read or written; its stream stays.
    void end(FILE* stream) {
        const std::lock_guard lock(mutex_);
        const auto entry = byStream_.find(stream);
        if (entry != byStream_.end()) endFamily(entry->second, true);
    }
    // For the end of the program: none lives on, and no more are started.
    void endAll();
    void tidy() {
        const std::lock_guard lock(mutex_);
        collectEnded();
    }

 private:
    void collectEnded();

    std::mutex mutex_;
    bool over_ = false;
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
    if (over_) {
        errno = ECANCELED;
        return nullptr;
    }
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

// Those that have ended by themselves are forgotten, with what they have left behind. One that is
// being written finds the end of its input, and completes what it was given.
void Commands::endAll() {
    const std::lock_guard lock(mutex_);
    over_ = true;
    collectEnded();
    std::vector<Command*> living;
    for (auto& [stream, command] : byStream_)
        if (command.reading) living.push_back(&command);
    for (Lingering& entry : lingering_) living.push_back(&entry.command);
    for (const bool force : {false, true}) {
        for (Command* command : living) endFamily(*command, force);
        const Clock::time_point end = Clock::now() + lastPatience;
        while (std::erase_if(living, [](Command* command) { return familyHasEnded(*command); }),
               !living.empty() && Clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

Commands::~Commands() {
    try {
        endAll();
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

void endCommands() try {
    commands().endAll();
} catch (const std::bad_alloc&) {  // without memory nobody can be told
}

void abandonPipe(FILE* pipe) {
    std::optional<Command> command = commands().take(pipe);
    if (!command) return;
    hangUp(*command);
    commands().linger(*command, Leaving::abandoned);
}

}  // namespace vistel::platform
