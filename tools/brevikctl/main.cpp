// brevikctl: inspects and repairs what the library works on.
//
// Results go to standard output, everything else to standard error. A command fails by throwing,
// see output/trouble.h.

#include <cstdio>
#include <exception>
#include <string>

#include "brevikctl/commands/commands.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/trouble.h"

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
    Say(error.what() + ("\nTry: " + command + " --help"));
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
    AddUpdateAndProfileCommands(app);
    AddDoctorCommand(app);
    AddFileCommands(app);
    AddRegistryCommands(app);
    AddTraceCommand(app);
    try {
        app.parse(argc, argv);
        return 0;
    } catch (const AllSaid&) {
        return kFailed;
    } catch (const CLI::ParseError& error) {
        // Help and version come this way too.
        return error.get_exit_code() == 0 ? app.exit(error) : Misused(app, error);
    } catch (const std::exception& error) {
        Say(Explanation(error));
        return kFailed;
    }
}
