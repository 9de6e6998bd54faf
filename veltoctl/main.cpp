// The command line over the control socket.
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxFolders.h"
#include "veltoctl/Commands.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <iostream>
#include <sstream>

namespace {

using velto::ctl::Arguments;

void addGoal(CLI::App& command, Arguments& arguments, bool required) {
    command.add_option("--goal", arguments.goal, "What the agent is to achieve")->required(required);
}

void addFollow(CLI::App& command, Arguments& arguments) {
    command.add_flag("--follow", arguments.follow,
                     "Print the transcript as it grows, until the session ends");
}

void describe(CLI::App& app, Arguments& arguments) {
    app.require_subcommand(1);
    app.fallthrough();
    app.add_flag("--json", arguments.json, "Print the application's reply as it is");
    app.footer("Results go to standard output, messages to standard error.\n"
               "Exit: 0 done, 1 the application said no, 2 not running or misuse.");
    const auto add = [&](const char* name, const char* text) {
        auto* command = app.add_subcommand(name, text);
        command->callback([&arguments, name] { arguments.command = name; });
        return command;
    };
    add("ping", "Say whether the application is running");
    add("status", "Show the session's state");
    add("readiness", "Show what a call needs and whether it is there");
    auto* call = add("call", "Call a number");
    call->add_option("NUMBER", arguments.number, "The number to dial, e.g. +15551234567")
        ->required()
        ->check([](const std::string& number) { return number.empty() ? "is empty" : ""; });
    addGoal(*call, arguments, true);
    addFollow(*call, arguments);
    auto* watch = add("watch", "Join a call that you place or answer yourself");
    addGoal(*watch, arguments, false);
    addFollow(*watch, arguments);
    add("hangup", "Stop the session");
    addFollow(*add("transcript", "Print the transcript of the current or last session"), arguments);
    add("history", "List finished calls, newest first");
    add("providers", "List the voice providers, their keys and voices");
}

} // namespace

int main(int argc, char** argv) {
    // A reader that goes away is seen as a failed write.
    std::signal(SIGPIPE, SIG_IGN);
    Arguments arguments;
    CLI::App app("Drives the running Velto.", "veltoctl");
    describe(app, arguments);
    velto::ctl::Output output;
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        std::ostringstream text;
        app.exit(help, text, std::cerr);
        auto shown = text.str();
        while (shown.ends_with('\n'))
            shown.pop_back();
        output.line(shown);
        return output.exitStatus(velto::ctl::kDone);
    } catch (const CLI::ParseError& error) {
        // The parser looks for a missing command first, and would not name the one it does not know.
        const auto unknown = app.remaining();
        if (app.get_subcommands().empty() && !unknown.empty() && !unknown.front().starts_with('-')) {
            velto::ctl::Output::message("no command \"" + velto::ctl::printable(unknown.front()) +
                                        "\"; see veltoctl --help");
            return velto::ctl::kFailed;
        }
        velto::ctl::Output::message(velto::ctl::printable(error.what()) + "; see veltoctl --help");
        return velto::ctl::kFailed;
    }
    velto::LinuxFolders folders(argv[0]);
    velto::Platform platform;
    platform.folders = &folders;
    velto::installPlatform(platform);
    return output.exitStatus(velto::ctl::run(arguments, output));
}
