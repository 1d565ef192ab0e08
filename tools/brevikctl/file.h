// brevikctl file: files, folders and volumes as the library sees them.
#pragma once

#include <CLI/CLI.hpp>

void AddFileCommands(CLI::App& app);
