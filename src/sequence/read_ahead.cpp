#include "sequence/read_ahead.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <new>
#include <system_error>
#include <utility>

#include "host/environment_number.h"
#include "iff/result_codes.h"
#include "platform/process.h"
#include "sequence/form_reader.h"
#include "sequence/opened_source.h"

namespace vistel {

namespace {

constexpr unsigned mostThreads = 64;
constexpr std::chrono::milliseconds waitPiece{2};

bool sameReading(const ImageLoadRequest& a, const ImageLoadRequest& b) {
    return a.loadPixels == b.loadPixels && a.decodeColour == b.decodeColour &&
           a.showAll == b.showAll && a.loadZ == b.loadZ && a.maxLevel == b.maxLevel &&
           a.fit == b.fit;
}

}  // namespace

int decodingThreads() {
    const unsigned processors = std::thread::hardware_concurrency();
    const unsigned own = processors < 2 ? 0 : std::min(processors, mostThreads);
    return static_cast<int>(
        environmentNumber({"VISTEL_THREADS", 0, mostThreads, Message::rVTThreads}, own));
}

// Where the system gives no more threads, those that there are do, be it none.
ReadAhead::ReadAhead(int threads, std::shared_ptr<ConvertedFiles> converted)
    : converted_(std::move(converted)) {
    threads_.reserve(static_cast<size_t>(threads));
    try {
        while (threads_.size() < static_cast<size_t>(threads))
            threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
    }
}

ReadAhead::~ReadAhead() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wanted_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

ReadAhead::Jobs::iterator ReadAhead::find(const Tstring& path, const ImageLoadRequest& request) {
    return std::find_if(jobs_.begin(), jobs_.end(), [&](const Job& job) {
        return !job.dropped && job.path == path && sameReading(job.request, request);
    });
}

void ReadAhead::want(const Tstring& path, const ImageLoadRequest& request) {
    if (threads_.empty()) return;
    Jobs wanted;
    Job& job = wanted.emplace_back();
    job.path = path;
    job.request = request;
    {
        const std::lock_guard lock(mutex_);
        if (find(path, request) != jobs_.end()) return;
        if (jobs_.size() >= room()) drop(jobs_.size() - room() + 1);
        jobs_.splice(jobs_.end(), wanted);
    }
    wanted_.notify_one();
}

// Drops the oldest ones. Those that a thread is at go when it has seen it.
void ReadAhead::drop(size_t jobs) {
    for (auto job = jobs_.begin(); jobs > 0; --jobs) {
        if (job->state == State::working)
            (job++)->dropped = true;
        else
            job = jobs_.erase(job);
    }
}

ReadAhead::Taken ReadAhead::take(const Tstring& path, const ImageLoadRequest& request,
                                 const platform::FileStamp& stamp, const platform::GoOn& goOn,
                                 FrameStore& frame) {
    std::unique_lock lock(mutex_);
    const auto job = find(path, request);
    if (job == jobs_.end()) return Taken::nothing;
    const auto mayGoOn = [&] {
        lock.unlock();
        const bool goes = platform::mayGoOn(goOn);
        lock.lock();
        return goes;
    };
    if (!mayGoOn()) return Taken::aborted;
    drop(static_cast<size_t>(std::distance(jobs_.begin(), job)));
    while (job->state == State::queued || job->state == State::working) {
        finished_.wait_for(lock, waitPiece);
        if (!mayGoOn()) return Taken::aborted;
    }
    const bool current = job->state == State::done && job->stamp == stamp;
    if (current) frame = std::move(job->frame);
    taken_ += current;
    jobs_.erase(job);
    return current ? Taken::frame : Taken::nothing;
}

void ReadAhead::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        auto job = jobs_.end();
        wanted_.wait(lock, [&] {
            job = std::ranges::find(jobs_, State::queued, &Job::state);
            return stopping_ || job != jobs_.end();
        });
        if (stopping_) return;
        job->state = State::working;
        lock.unlock();
        const bool whole = read(*job);
        lock.lock();
        job->state = whole ? State::done : State::failed;
        ++readSoFar_;
        if (job->dropped) jobs_.erase(job);
        finished_.notify_one();
    }
}

// The frame that the stream holds, if it is whole.
bool ReadAhead::readFrame(Job& job, FILE* stream) const {
    ImageLoadRequest request = job.request;
    request.stream = stream;
    request.verbose = request.waitForWriter = false;
    request.countTile = {};  // not for these threads
    request.goOn = [&] { return isWanted(job); };
    bool found = false;
    return readForm(request, 1, job.frame, found) == iffOk && found;
}

// One of the few conversions at once, waited for as long as the file is wanted.
class ReadAhead::ConverterTurn {
 public:
    ConverterTurn(const ReadAhead& ahead, const Job& job) : count_(ahead.conversions_) {
        while (!taken_ && ahead.isWanted(job)) {
            int running = count_;
            taken_ =
                running < mostConversions && count_.compare_exchange_strong(running, running + 1);
            if (!taken_) std::this_thread::sleep_for(waitPiece);
        }
    }
    ~ConverterTurn() { count_ -= taken_; }
    ConverterTurn(const ConverterTurn&) = delete;
    ConverterTurn& operator=(const ConverterTurn&) = delete;
    explicit operator bool() const { return taken_; }

 private:
    std::atomic<int>& count_;
    bool taken_ = false;
};

// The frame that the file's converter brings, if that ends well.
bool ReadAhead::convert(Job& job, SourceReader reader) const {
    const std::optional<std::string> program = converterProgram(reader);
    const ConverterTurn turn(*this, job);
    if (!program || !turn) return false;
    OpenedSource converted =
        openCommand(converterCommand(reader, *program, job.path), platform::CommandErrors::dropped);
    if (!converted.stream || !readFrame(job, converted.stream.file())) return false;
    return converted.stream.close([&] { return isWanted(job); }) == 0;
}

// False for all that is not simply right: the one who asks for the frame reads it then, waits for
// its writer, and says what is wrong with it.
bool ReadAhead::read(Job& job) const try {
    if (!platform::isRegularFile(job.path)) return false;
    const SourceStream file(platform::openFile(job.path, "r"), false);
    if (!file) return false;
    const auto stamp = platform::fileStamp(file.file());
    if (!stamp || stamp->size == 0 || platform::modifiedJustNow(*stamp)) return false;
    const SourceReader reader = readerOfFile(job.path, job.request.waitForWriter);
    const bool direct = reader == SourceReader::direct;
    if (!direct && converted_->failure(job.path, *stamp)) return false;
    if (!(direct ? readFrame(job, file.file()) : convert(job, reader))) return false;
    job.stamp = *stamp;
    return platform::fileStamp(file.file()) == stamp;
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace vistel
