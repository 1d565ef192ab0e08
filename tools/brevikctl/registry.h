// brevikctl registry: keys and values of the machine's registry.
#pragma once

#include <CLI/CLI.hpp>

void AddRegistryCommands(CLI::App& app);
