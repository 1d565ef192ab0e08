#include "rows.h"

#include <cstdio>

std::string Text(Nanoseconds time) {
    char text[32];
    if (time < kMicrosecond) {
        std::snprintf(text, sizeof text, "%.0f ns", time.count());
    } else if (time < kMillisecond) {
        std::snprintf(text, sizeof text, "%.2f us", time / kMicrosecond);
    } else {
        std::snprintf(text, sizeof text, "%.2f ms", time / kMillisecond);
    }
    return text;
}

std::string Verdict(bool met) {
    return met ? "met" : "MISSED";
}

Claim Under(Nanoseconds bound) {
    return [bound](const Figures& figures) { return figures.ours < bound; };
}

Claim AtMost(double times) {
    return [times](const Figures& figures) { return figures.ours <= times * figures.peer; };
}

Row SubjectRow(const std::string& what, const std::string& subject, const std::string& peer,
               const std::string& target, const Claim& isMet) {
    const Figures figures = MeasureSubject(subject);
    return {what,
            target,
            Text(figures.ours),
            peer,
            Text(figures.peer),
            isMet ? Verdict(isMet(figures)) : "-"};
}
