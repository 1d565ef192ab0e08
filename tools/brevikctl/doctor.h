// brevikctl doctor: walks a machine, and says what is wrong with it and how to mend it.
#pragma once

#include <CLI/CLI.hpp>

void AddDoctorCommand(CLI::App& app);
