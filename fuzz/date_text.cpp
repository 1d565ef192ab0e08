// The text forms of dates and times: whatever is read is a value of the calendar that comes back
// from its own text, and whatever is not leaves the value as it was.

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "filesystem/dates/DateTime.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

template <typename T>
bool TryRead(const std::string& text, T* value) {
    std::istringstream stream(text);
    const T before = *value;
    if (stream >> *value) {
        return true;
    }
    Require(*value == before);
    return false;
}

// Gives the value that was read, or the default one.
template <typename T>
T CheckForm(const std::string& text) {
    T value;
    if (TryRead(text, &value)) {
        std::ostringstream written;
        written << value;
        T again;
        Require(TryRead(written.str(), &again));
        std::ostringstream rewritten;
        rewritten << again;
        Require(rewritten.str() == written.str());
    }
    return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    CheckForm<TimeOfDay>(text);
    CheckForm<TimeZone>(text);
    const Date date = CheckForm<Date>(text);
    Require(Date(date.GetDayNumber()) == date);
    const DateTime time = CheckForm<DateTime>(text);
    // The last day of the calendar has no next one to move to.
    if (std::abs(time.GetDate().GetYear()) != 32767) {
        DateTime elsewhere = time;
        elsewhere.ConvertToZone(TimeZone(9, 30, true, false));
        Require(elsewhere.GetTotalTicks() == time.GetTotalTicks());
    }
    return 0;
}
