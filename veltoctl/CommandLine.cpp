#include "veltoctl/CommandLine.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <sstream>

namespace velto::ctl {
namespace {

class Description {
  public:
    Description(CLI::App& app, Arguments& arguments, Output& output) : arguments_(arguments) {
        app.require_subcommand(1);
        app.fallthrough();
        app.add_flag("--json", arguments.json, "Print JSON: the reply as it is, or one object a line");
        app.add_flag("--quiet", output.quiet, "No messages but errors");
        app.set_version_flag("--version", "veltoctl " VELTO_VERSION);
        app.footer("Results go to standard output, messages to standard error.\n"
                   "Exit: 0 done; 1 the application said no, the session ended in error, or something is\n"
                   "missing; 2 not running, or misuse; 3 no session has run; 4 the application went away.");
        add(app, "ping", "Say whether the application is running");
        add(app, "status", "Show the session's state");
        add(app, "readiness", "Show what a call needs and whether it is there");
        auto& call = add(app, "call", "Call a number");
        call.add_option("NUMBER", arguments.number, "The number to dial, e.g. +15551234567")
            ->required()
            ->check([](const std::string& number) { return number.empty() ? "is empty" : ""; });
        addSession(call, true);
        addSession(add(app, "watch", "Join a call that you place or answer yourself"), false);
        add(app, "wait", "Wait until the session has ended; its outcome is the exit status");
        add(app, "hangup", "Stop the session");
        addFollow(add(app, "transcript", "Print the transcript of the current or last session"));
        auto& history = add(app, "history", "List finished calls, newest first");
        history.add_option("--last", arguments.last, "List so many calls only")
            ->check(CLI::Range(1, 1'000'000));
        auto& show = add(history, "show", "Show one call with everything that is known of it");
        show.add_option("ID", arguments.id, "The call's ID, or enough of its beginning")->required();
        add(app, "providers", "List the voice providers, their keys and voices");
        auto& doctor = add(app, "doctor", "Look for everything that a call needs, and say what to do");
        doctor.add_flag("--online", arguments.online, "Also send the stored keys to their providers");
        addKeys(*app.add_subcommand("key", "Keep the voice providers' API keys"));
    }

  private:
    CLI::App& add(CLI::App& parent, const std::string& name, const char* text) {
        auto* const command = parent.add_subcommand(name, text);
        const auto whole = parent.get_parent() ? parent.get_name() + " " + name : name;
        // The innermost command is called back first.
        command->callback([this, whole] {
            if (arguments_.command.empty())
                arguments_.command = whole;
        });
        return *command;
    }
    void addSession(CLI::App& command, bool goalIsRequired) {
        command.add_option("--goal", arguments_.goal, "What the agent is to achieve")
            ->required(goalIsRequired);
        command
            .add_flag("--hangup-on-interrupt", arguments_.hangUpOnInterrupt,
                      "With --follow: Ctrl-C stops the session, too")
            ->needs(addFollow(command));
    }
    CLI::Option* addFollow(CLI::App& command) {
        return command.add_flag("--follow", arguments_.follow,
                                "Print state and transcript as they come, until the session ends");
    }
    void addKeys(CLI::App& keys) {
        keys.require_subcommand(1);
        for (const char* const name : {"set", "remove"}) {
            auto& command = add(
                keys, name, *name == 's' ? "Store a key, read from standard input" : "Remove a stored key");
            command.add_option("PROVIDER", arguments_.provider, "gemini or openai")
                ->required()
                ->check(CLI::IsMember({"gemini", "openai"}));
        }
        add(keys, "list", "Say for which providers a key is stored");
    }

    Arguments& arguments_;
};

/// What is wrong, without a word of what may be a key.
std::string trouble(CLI::App& app, const CLI::ParseError& error) {
    const auto unknown = app.remaining(true);
    const auto commands = app.get_subcommands();
    const bool hasTooMuch = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError) ||
                            error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ValidationError) ||
                            error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ConversionError);
    if (hasTooMuch && app.got_subcommand("key"))
        return "say gemini or openai and nothing else: a key is never an argument, where it would stand in "
               "the "
               "shell's history and the list of processes; \"veltoctl key set\" reads it from standard input";
    // The parser looks for a missing command first, and would not name the one it does not know.
    if (commands.empty() && !unknown.empty() && !unknown.front().starts_with('-'))
        return "no command \"" + unknown.front() + "\"; see veltoctl --help";
    if (commands.empty() && !unknown.empty())
        return "no option \"" + unknown.front() + "\"; see veltoctl --help";
    return std::string(error.what()) + "; see veltoctl --help";
}

} // namespace

int runCommandLine(int argc, char** argv, const std::function<int(const Arguments&, Output&)>& run) {
    // A reader that goes away is seen as a failed write.
    std::signal(SIGPIPE, SIG_IGN);
    Arguments arguments;
    Output output;
    CLI::App app("Drives the running Velto.", "veltoctl");
    const Description description(app, arguments, output);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        std::ostringstream text;
        app.exit(help, text, text);
        auto shown = text.str();
        while (shown.ends_with('\n'))
            shown.pop_back();
        output.line(shown);
        return output.exitStatus(kDone);
    } catch (const CLI::ParseError& error) {
        Output::message(printable(trouble(app, error)));
        return kFailed;
    }
    return output.exitStatus(run(arguments, output));
}

} // namespace velto::ctl
