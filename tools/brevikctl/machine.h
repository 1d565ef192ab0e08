// brevikctl machine: the machine folder as a whole.
#pragma once

#include <CLI/CLI.hpp>

void AddMachineCommands(CLI::App& app);
