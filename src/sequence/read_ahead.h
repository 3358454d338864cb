// Frames that are read and decoded before they are asked for, by threads that are private to the
// loader. Nothing else of the program sees them: a frame counts as read when it is taken, and only
// what one reading at that moment would have brought as well is ever handed out. A file that cannot
// be read to its end, or that has changed since, is left to whoever takes it. What needs a
// converter is converted ahead, too, a few files at a time, and without a word: what the converter
// has to say it says to whoever takes the frame.
#pragma once

#include <atomic>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "host/tstring.h"
#include "iff/frame_store.h"
#include "iff/image_loader.h"
#include "platform/files.h"
#include "platform/go_on.h"
#include "sequence/converted_files.h"
#include "sequence/converter.h"

namespace vistel {

// Threads that decode frames: the environment variable VISTEL_THREADS (0 to 64; 0: none ahead),
// else one for each processor, none where there is only one. Says so on standard error when the
// variable is no such number.
int decodingThreads();

class ReadAhead {
 public:
    // `threads` of them, or as many as the system has. `converted` is shared with who takes the
    // frames.
    ReadAhead(int threads, std::shared_ptr<ConvertedFiles> converted);
    ~ReadAhead();  // ends what is being read
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    // Files that may be wanted and not yet taken: beyond it the one that was wanted first is
    // dropped.
    size_t room() const { return threads_.empty() ? 0 : threads_.size() + 2; }

    // Frames that have been taken.
    size_t taken() const { return taken_; }
    // Files that the threads have done with; tests wait for it.
    size_t readSoFar() const { return readSoFar_; }

    // Queues the first image form of a file, to be read as the request says; its stream and
    // call-backs are not looked at. One that is queued already stays in its place.
    void want(const Tstring& path, const ImageLoadRequest& request);

    enum class Taken { nothing, frame, aborted };
    // The file that was wanted so, as it is now (the stamp tells). Waits for it when it is being
    // read; `goOn` is asked at least once. Files that were wanted earlier and not taken are
    // dropped.
    [[nodiscard]] Taken take(const Tstring& path, const ImageLoadRequest& request,
                             const platform::FileStamp& stamp, const platform::GoOn& goOn,
                             FrameStore& frame);

 private:
    enum class State { queued, working, done, failed };
    struct Job {
        Tstring path;
        ImageLoadRequest request;
        State state = State::queued;
        std::atomic<bool> dropped = false;  // not wanted any more, but a thread is still at it
        platform::FileStamp stamp;
        FrameStore frame;
    };
    using Jobs = std::list<Job>;

    // So many files are converted at once, however many threads there are: each takes a process
    // and, in that, the memory for a picture.
    static constexpr int mostConversions = 4;
    class ConverterTurn;

    void work();
    bool isWanted(const Job& job) const { return !stopping_ && !job.dropped; }
    [[nodiscard]] bool read(Job& job) const;
    [[nodiscard]] bool readFrame(Job& job, FILE* stream) const;
    [[nodiscard]] bool convert(Job& job, SourceReader reader) const;
    Jobs::iterator find(const Tstring& path, const ImageLoadRequest& request);
    void drop(size_t jobs);

    std::shared_ptr<ConvertedFiles> converted_;
    std::mutex mutex_;
    std::condition_variable wanted_, finished_;
    Jobs jobs_;  // in the order in which they were wanted
    mutable std::atomic<int> conversions_ = 0;
    std::atomic<bool> stopping_ = false;
    std::atomic<size_t> readSoFar_ = 0;
    size_t taken_ = 0;
    std::vector<std::thread> threads_;
};

}  // namespace vistel
