// brevikctl: inspects and repairs what the library works on.
//
// Results go to standard output, everything else to standard error. A command fails by throwing: a
// std::exception's text is shown, a CLI::RuntimeError means that all has been said and bears the
// exit code.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "catalogue.h"
#include "certificate.h"
#include "cookie.h"
#include "database.h"
#include "dispatch.h"
#include "doctor.h"
#include "file.h"
#include "machine.h"
#include "registry.h"
#include "trace.h"

namespace {

constexpr int kFailed = 1;
constexpr int kMisused = 2;

constexpr const char* kFooter =
    "Exit codes: 0 done, 1 the command failed, 2 the command line was not understood.\n"
    "BREVIK_MACHINE names the machine folder to work on.\n";

int Misused(const CLI::App& app, const CLI::ParseError& error) {
    std::string command = "brevikctl";
    for (const CLI::App* sub : app.get_subcommands()) {
        command += " " + sub->get_name();
    }
    std::fprintf(stderr, "brevikctl: %s\nTry: %s --help\n", error.what(), command.c_str());
    return kMisused;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Inspects and repairs a machine of brevikconfig.", "brevikctl");
    app.set_version_flag("--version", std::string("brevikctl " BREVIK_VERSION) +
                                          (*BREVIK_KEY_NOTE != '\0' ? "\n" BREVIK_KEY_NOTE : ""));
    app.require_subcommand(1);
    app.footer(kFooter);
    AddMachineCommands(app);
    AddCertificateCommands(app);
    AddCatalogueCommands(app);
    AddCookieCommands(app);
    AddDatabaseCommands(app);
    AddDispatchCommands(app);
    AddDoctorCommand(app);
    AddFileCommands(app);
    AddRegistryCommands(app);
    AddTraceCommands(app);
    try {
        app.parse(argc, argv);
        return 0;
    } catch (const CLI::RuntimeError& error) {
        return error.get_exit_code();
    } catch (const CLI::ParseError& error) {
        // Help and version come this way too.
        return error.get_exit_code() == 0 ? app.exit(error) : Misused(app, error);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "brevikctl: %s\n", error.what());
        return kFailed;
    }
}
