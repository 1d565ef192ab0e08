// Times of the system's clock as texts.
#pragma once

#include <ctime>
#include <string>

// The time in the form of strftime, its parts being those of gmtime_r or localtime_r; empty for one
// that has no date.
inline std::string TimeText(std::time_t time, std::tm* (*partsOf)(const std::time_t*, std::tm*),
                            const char* form) {
    std::tm parts;
    char text[64];
    return partsOf(&time, &parts) == nullptr
               ? std::string()
               : std::string(text, std::strftime(text, sizeof text, form, &parts));
}
