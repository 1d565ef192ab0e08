// brevikctl trace: shows the trace of every host of this user as it is made.
#pragma once

#include <CLI/CLI.hpp>

void AddTraceCommands(CLI::App& app);
