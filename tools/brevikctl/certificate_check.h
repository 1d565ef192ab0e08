// brevikctl certificate check: tells why a certificate is not in the catalogue.
#pragma once

#include <CLI/CLI.hpp>

void AddCertificateCheck(CLI::App* certificate);
