// brevikctl certificate: keys, certificate files, and their entries in the registry.
#pragma once

#include <CLI/CLI.hpp>

void AddCertificateCommands(CLI::App& app);
