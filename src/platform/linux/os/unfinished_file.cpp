#include "platform/unfinished_file.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "platform/files.h"
#include "platform/linux/os/held_signals.h"

namespace vistel::platform {

namespace {

// Files beside each other that other programs are at, or could not remove.
constexpr int mostUnfinished = 10000;
constexpr mode_t permissions = 07777;

std::string folderOf(const std::string& target) { return target.substr(0, target.rfind('/') + 1); }

// A free name beside the target for whatever `take` does with it: that returns whether it was done,
// with errno EEXIST when the name is taken. Empty with errno set on failure.
template <class Take>
std::string freeName(const std::string& target, Take&& take) {
    for (int number = 0; number < mostUnfinished; ++number) {
        std::string name =
            folderOf(target) + "vistel-unfinished-" + std::to_string(number) + ".tmp";
        if (name.size() >= PATH_MAX) {
            errno = ENAMETOOLONG;
            return {};
        }
        if (take(name)) return name;
        if (errno != EEXIST) return {};
    }
    return {};
}

std::string pathOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

// Not every file system has files without a name, and only through the list of open files may
// everybody give them one. -1 where there are none.
int openNameless(const std::string& target, mode_t mode) {
    const std::string folder = folderOf(target);
    const int file =
        open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
    if (file < 0 || access(pathOfDescriptor(file).c_str(), F_OK) == 0) return file;
    close(file);
    return -1;
}

// Where the target's folder takes no files. -1 with errno set on failure.
int openElsewhere() {
    const FilePtr file(std::tmpfile());
    return file ? fcntl(fileno(file.get()), F_DUPFD_CLOEXEC, 3) : -1;
}

// Whether the file could be given the owner and the group of another.
bool ownedAs(int file, const struct stat& other) {
    struct stat own {};
    (void)!fchown(file, other.st_uid, other.st_gid);
    return fstat(file, &own) == 0 && own.st_uid == other.st_uid && own.st_gid == other.st_gid;
}

bool reserve(int file, off_t size) {
    if (size == 0) return true;
    const int error = posix_fallocate(file, 0, size);
    if (error == 0 || error == EOPNOTSUPP || error == EINVAL) return true;
    errno = error;
    return false;
}

bool copyBytes(int from, int to, off_t size) {
    std::vector<char> block(size_t{1} << 18);
    for (off_t at = 0; at < size;) {
        const auto wanted =
            static_cast<size_t>(std::min<off_t>(size - at, static_cast<off_t>(block.size())));
        const ssize_t got = pread(from, block.data(), wanted, at);
        if (got == 0) errno = EIO;
        if (got <= 0) return false;
        for (ssize_t done = 0; done < got;) {
            const ssize_t more =
                pwrite(to, block.data() + done, static_cast<size_t>(got - done), at + done);
            if (more <= 0) return false;
            done += more;
        }
        at += got;
    }
    return true;
}

bool copyInto(int from, const std::string& target) {
    struct stat whole {
    }, old{};
    const int to = open(target.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
    if (to < 0) return false;
    bool done = fstat(from, &whole) == 0 && fstat(to, &old) == 0;
    if (done && !reserve(to, whole.st_size)) {
        const int error = errno;
        (void)!ftruncate(to, old.st_size);
        errno = error;
        done = false;
    }
    done = done && copyBytes(from, to, whole.st_size) && ftruncate(to, whole.st_size) == 0 &&
           fsync(to) == 0;
    const int error = errno;
    if (close(to) != 0 && done) return false;
    errno = error;
    return done;
}

// The descriptor stays open when the stream is closed.
FILE* streamOn(int file, std::vector<char>& buffer) {
    const int copy = fcntl(file, F_DUPFD_CLOEXEC, 3);
    FILE* stream = copy < 0 ? nullptr : fdopen(copy, "w+");
    if (!stream && copy >= 0) close(copy);
    if (stream) std::setvbuf(stream, buffer.data(), _IOFBF, buffer.size());
    return stream;
}

}  // namespace

FILE* UnfinishedFile::create(const std::string& target, Name named) {
    struct stat status {};
    const bool there = stat(target.c_str(), &status) == 0;
    if (there && access(target.c_str(), W_OK) != 0) return nullptr;
    target_ = target;
    mode_ = there ? status.st_mode & permissions : 0;
    const mode_t mode = there ? 0600 : 0666;
    beginChange();
    int file = named == Name::always ? -1 : openNameless(target, mode);
    if (file < 0)
        name_ = freeName(target, [&](const std::string& name) {
            file = open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode);
            return file >= 0;
        });
    const bool closedFolder = file < 0 && (errno == EACCES || errno == EPERM || errno == EROFS);
    if (there && closedFolder) file = openElsewhere();
    copied_ = there && (closedFolder || status.st_nlink > 1 || !ownedAs(file, status));
    buffer_.resize(bufferBytes);
    FILE* stream = file < 0 ? nullptr : streamOn(file, buffer_);
    handle_ = file;
    endChange(name_);
    return stream;
}

void UnfinishedFile::beginWriteOut() {
    if (!copied_) (void)!sync_file_range(static_cast<int>(handle_), 0, 0, SYNC_FILE_RANGE_WRITE);
}

bool UnfinishedFile::finish() {
    const int file = static_cast<int>(handle_);
    beginChange();
    // By the descriptor: nobody can put another file under the name meanwhile.
    bool done = copied_ ? copyInto(file, target_)
                        : (mode_ == 0 || fchmod(file, mode_) == 0) && fdatasync(file) == 0;
    if (done && !copied_ && name_.empty())
        name_ = freeName(target_, [&](const std::string& name) {
            return linkat(AT_FDCWD, pathOfDescriptor(file).c_str(), AT_FDCWD, name.c_str(),
                          AT_SYMLINK_FOLLOW) == 0;
        });
    if (done && !copied_) done = !name_.empty() && replaceFile(name_, target_);
    if (done && !copied_) name_.clear();
    endChange(name_);
    return done;
}

UnfinishedFile::~UnfinishedFile() {
    if (handle_ >= 0) close(static_cast<int>(handle_));
    if (name_.empty()) return;
    beginChange();
    unlink(name_.c_str());
    endChange({});
}

}  // namespace vistel::platform
