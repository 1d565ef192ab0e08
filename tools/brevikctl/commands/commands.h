// The commands of brevikctl, a file each of the same name.
#pragma once

#include <CLI/CLI.hpp>

void AddCatalogueCommands(CLI::App& app);
void AddCertificateCommands(CLI::App& app);
void AddCookieCommands(CLI::App& app);
void AddDatabaseCommands(CLI::App& app);
void AddDoctorCommand(CLI::App& app);
void AddFileCommands(CLI::App& app);
void AddMachineCommands(CLI::App& app);
void AddRegistryCommands(CLI::App& app);
void AddTraceCommand(CLI::App& app);
void AddUpdateAndProfileCommands(CLI::App& app);
