// What is remembered of the files of the current source that a converter has read: its complaints
// are told once, and a file that brought nothing is not converted again as long as it stays as it
// is. Safe on every thread.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "host/tstring.h"
#include "platform/files.h"

namespace vistel {

// Why a file brings no picture.
struct FailedReading {
    int code = 0;
    Tstring reason;
};

class ConvertedFiles {
 public:
    // Everything is new again, or one file.
    void forget();
    void forget(const Tstring& path);

    // A file has been converted, and what it brought instead of a picture. A file that was written
    // just now is not remembered: it may change without its stamp telling.
    void remember(const Tstring& path, const platform::FileStamp& stamp,
                  std::optional<FailedReading> failure);

    // The converter has said what is wrong with the file, which need not be said again while it
    // stays wrong, however the file changes; `wrong` is false when it was read well.
    void setWrong(const Tstring& path, bool wrong);
    bool isWrong(const Tstring& path) const;

    // Whether the file, as it is now, has been converted; and that it has failed.
    bool contains(const Tstring& path, const platform::FileStamp& stamp) const;
    std::optional<FailedReading> failure(const Tstring& path,
                                         const platform::FileStamp& stamp) const;

 private:
    struct Conversion {
        platform::FileStamp stamp;
        std::optional<FailedReading> failure;
    };
    const Conversion* find(const Tstring& path, const platform::FileStamp& stamp) const;

    mutable std::mutex mutex_;
    std::map<Tstring, Conversion, std::less<>> conversions_;
    std::set<Tstring, std::less<>> wrong_;
};

}  // namespace vistel
