// brevikctl database: the rows that the catalogue keeps of certificate files.
#pragma once

#include <CLI/CLI.hpp>

void AddDatabaseCommands(CLI::App& app);
