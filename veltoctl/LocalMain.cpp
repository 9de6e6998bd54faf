// The commands that look at this computer itself: composition root of veltoctl-local, which veltoctl becomes.
#include "VeltoPlatform/linux/AskToReload.h"
#include "VeltoPlatform/linux/LinuxPlatform.h"
#include "VeltoShared/core/AppPaths.h"
#include "veltoctl/CommandLine.h"
#include "veltoctl/Doctor.h"
#include "veltoctl/Keys.h"

#include <unistd.h>

using namespace velto::ctl;

int main(int argc, char** argv) {
    const int exit = runCommandLine(argc, argv, [argv](const Arguments& arguments, Output& output) {
        if (!isLocal(arguments)) {
            Output::message("run veltoctl instead");
            return static_cast<int>(kFailed);
        }
        const bool isKey = arguments.command != "doctor";
        // Never destroyed: a check that hangs may still be in it when this program ends.
        [[maybe_unused]] static const auto* const platform =
            new velto::LinuxPlatform(*argv, velto::AppPaths::bundleID, [isKey](const std::string& line) {
                if (isKey && (line.starts_with("keyring") || line.starts_with("key file")))
                    Output::message(line);
            });
        return isKey ? Keys::run(arguments, output,
                                 [](pid_t process) { return velto::askToReload(process, "velto"); })
                     : doctor(arguments, output);
    });
    ::_exit(exit);
}
