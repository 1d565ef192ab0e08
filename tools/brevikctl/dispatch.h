// brevikctl update and profile: what an application asks of the online services.
#pragma once

#include <CLI/CLI.hpp>

void AddDispatchCommands(CLI::App& app);
