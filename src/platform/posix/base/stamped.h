// Answers that hold for as long as files and folders stay as they were.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/posix/base/file_stamp.h"

namespace brevik::platform {

// The files and folders that an answer rests on, as they were seen on the way to it.
class SeenFiles {
  public:
    // From now on: what is added must have been looked at after this.
    SeenFiles() : begun_(Now()) {}

    void Add(std::string path, const FileStamp& stamp) {
        areSettled_ = areSettled_ && stamp.IsSettledAt(begun_);
        files_.push_back({std::move(path), stamp});
    }

    // For an answer that rests on something else as well, which no stamp shows.
    void Distrust() { areSettled_ = false; }

    // Whether any change of them will show, so that the answer may be kept.
    bool AreSettled() const { return areSettled_; }

    bool AreUnchanged() const {
        return std::all_of(files_.begin(), files_.end(),
                           [](const Seen& file) { return StampOf(file.path) == file.stamp; });
    }

  private:
    struct Seen {
        std::string path;
        FileStamp stamp;
    };

    std::int64_t begun_;
    bool areSettled_ = true;
    std::vector<Seen> files_;
};

template <typename T>
struct Stamped {
    T answer;
    SeenFiles seen;
};

// Answers by what was asked, all dropped when a bound is reached. Its user looks whether one still
// holds. Safe on any thread.
template <typename Question, typename Kept>
class AnswerCache {
  public:
    explicit AnswerCache(std::size_t bound) : bound_(bound) {}

    // Null without one.
    std::shared_ptr<const Kept> Find(const Question& question) {
        const std::lock_guard lock(mutex_);
        const auto found = answers_.find(question);
        return found != answers_.end() ? found->second.answer : nullptr;
    }

    // `size` is what the answer counts towards the bound.
    void Keep(const Question& question, std::shared_ptr<const Kept> answer, std::size_t size = 1) {
        const std::lock_guard lock(mutex_);
        if (size_ + size > bound_) {
            answers_.clear();
            size_ = 0;
        }
        Entry& entry = answers_[question];
        size_ += size - entry.size;
        entry = {std::move(answer), size};
    }

  private:
    struct Entry {
        std::shared_ptr<const Kept> answer;
        std::size_t size = 0;
    };

    const std::size_t bound_;
    std::mutex mutex_;
    std::unordered_map<Question, Entry> answers_;
    std::size_t size_ = 0;
};

}  // namespace brevik::platform
