// When a time stamp shows every change from now on.

#include "platform/posix/base/file_stamp.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kSecond = 1'000 * kMillisecond;

TEST(FileStamps, SettleOnceTheStepOfTheirFileSystemIsOver) {
    const struct {
        std::int64_t stamp;
        std::int64_t moment;
        bool isSettled;
    } cases[] = {
        {5 * kSecond + 1, 5 * kSecond + 20 * kMillisecond, false},
        {5 * kSecond + 1, 5 * kSecond + 21 * kMillisecond, true},
        // Whole seconds: the file may have been made at any time within them.
        {5 * kSecond, 5 * kSecond + 999 * kMillisecond, false},
        {4 * kSecond, 6 * kSecond + 10 * kMillisecond, false},
        {4 * kSecond, 6 * kSecond + 11 * kMillisecond, true},
        // The clock was set back.
        {5 * kSecond + 1, 4 * kSecond, false},
        {50 * kSecond, 4 * kSecond, false},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(HasSettled(row.stamp, row.moment), row.isSettled)
            << row.stamp << " at " << row.moment;
        // Both times of a file count, but for a last write that a program has set to the future.
        FileStamp stamp(0);
        stamp.changed = row.stamp;
        EXPECT_EQ(stamp.IsSettledAt(row.moment), row.isSettled);
        stamp.changed = 1;
        stamp.modified = row.stamp;
        EXPECT_EQ(stamp.IsSettledAt(row.moment), row.isSettled || row.stamp > row.moment);
    }
}

}  // namespace
