// What every command is made with.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "catalogue/RecordGathering.h"
#include "modules/SmartComInitializer.h"

// A command that is a group of others.
inline CLI::App& AddGroup(CLI::App& app, const char* name, const char* description) {
    return *app.add_subcommand(name, description)->require_subcommand(1);
}

// A command with options of its own, which live as long as the application. It runs in an apartment
// of the component model, waits for other processes that hold the database as one call of an export
// does, and fails by throwing.
template <typename Options>
class Command {
  public:
    Command(CLI::App& parent, const char* name, const char* description,
            void (*run)(const Options&))
        : app_(parent.add_subcommand(name, description)) {
        app_->callback([run, options = options_] {
            const CLibraryUtils::SmartComInitializer apartment;
            const RecordGathering waitsOnce;
            run(*options);
        });
    }

    // An option, or an argument where the name has no dash.
    template <typename Member>
    CLI::Option* Add(const char* name, Member member, const char* description) {
        return app_->add_option(name, (*options_).*member, description);
    }
    CLI::Option* AddFlag(const char* name, bool Options::*member, const char* description) {
        return app_->add_flag(name, (*options_).*member, description);
    }

    // Options of which one and no other has to be given.
    void RequireOneOf(const char* name, CLI::Option* one, CLI::Option* other) {
        CLI::Option_group* const group = app_->add_option_group(name);
        group->add_options(one, other);
        group->require_option(1);
    }

    // The same for a row of simple ones.
    template <typename Member>
    Command& Option(const char* name, Member member, const char* description) {
        Add(name, member, description);
        return *this;
    }
    template <typename Member>
    Command& Required(const char* name, Member member, const char* description) {
        Add(name, member, description)->required();
        return *this;
    }
    Command& Flag(const char* name, bool Options::*member, const char* description) {
        AddFlag(name, member, description);
        return *this;
    }
    Command& Json(const char* description = "One JSON object") {
        return Flag("--json", &Options::json, description);
    }
    Command& Footer(const char* text) {
        app_->footer(text);
        return *this;
    }

  private:
    std::shared_ptr<Options> options_ = std::make_shared<Options>();
    CLI::App* app_;
};
