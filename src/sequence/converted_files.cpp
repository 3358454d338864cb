#include "sequence/converted_files.h"

#include <utility>

namespace vistel {

void ConvertedFiles::forget() {
    const std::lock_guard lock(mutex_);
    conversions_.clear();
    wrong_.clear();
}

void ConvertedFiles::forget(const Tstring& path) {
    const std::lock_guard lock(mutex_);
    conversions_.erase(path);
    wrong_.erase(path);
}

void ConvertedFiles::remember(const Tstring& path, const platform::FileStamp& stamp,
                              std::optional<FailedReading> failure) {
    if (platform::modifiedJustNow(stamp)) return;
    const std::lock_guard lock(mutex_);
    conversions_.insert_or_assign(path, Conversion{stamp, std::move(failure)});
}

const ConvertedFiles::Conversion* ConvertedFiles::find(const Tstring& path,
                                                       const platform::FileStamp& stamp) const {
    const auto entry = conversions_.find(path);
    return entry != conversions_.end() && entry->second.stamp == stamp ? &entry->second : nullptr;
}

void ConvertedFiles::setWrong(const Tstring& path, bool wrong) {
    const std::lock_guard lock(mutex_);
    if (wrong)
        wrong_.insert(path);
    else
        wrong_.erase(path);
}

bool ConvertedFiles::isWrong(const Tstring& path) const {
    const std::lock_guard lock(mutex_);
    return wrong_.contains(path);
}

bool ConvertedFiles::contains(const Tstring& path, const platform::FileStamp& stamp) const {
    const std::lock_guard lock(mutex_);
    return find(path, stamp) != nullptr;
}

std::optional<FailedReading> ConvertedFiles::failure(const Tstring& path,
                                                     const platform::FileStamp& stamp) const {
    const std::lock_guard lock(mutex_);
    const Conversion* conversion = find(path, stamp);
    return conversion ? conversion->failure : std::nullopt;
}

}  // namespace vistel
