// brevikctl item, guids and language: what the catalogue of the installed products answers.
#pragma once

#include <CLI/CLI.hpp>

void AddCatalogueCommands(CLI::App& app);
