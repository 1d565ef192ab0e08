// The rows of the table, and how figures are written in them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "subject_runner.h"

struct Row {
    std::string what;
    std::string target;
    std::string ours;
    std::string peer;
    std::string peerFigure;
    std::string verdict;
};

inline constexpr Nanoseconds kMicrosecond = std::chrono::microseconds(1);
inline constexpr Nanoseconds kMillisecond = std::chrono::milliseconds(1);

using Claim = std::function<bool(const Figures&)>;

std::string Text(Nanoseconds time);
std::string Verdict(bool met);

// The claim that our time stays under a bound, and that it is at most so many times the peer's.
Claim Under(Nanoseconds bound);
Claim AtMost(double times);

// Measures the subject. Without a claim the row is for information.
Row SubjectRow(const std::string& what, const std::string& subject, const std::string& peer,
               const std::string& target, const Claim& isMet);

// What is promised about files. Makes its trees in the machine that the environment names, and
// takes them away again.
std::vector<Row> FileRows();

// What is promised about the catalogue, each on a machine of its own beside that one.
std::vector<Row> CatalogueRows();
