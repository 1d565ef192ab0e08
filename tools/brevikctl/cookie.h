// brevikctl cookie: values in the user's web cookies, and the cookies themselves.
#pragma once

#include <CLI/CLI.hpp>

void AddCookieCommands(CLI::App& app);
