// The command line over the control socket. Quick to start: what brings large libraries is another program.
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/InstallTree.h"
#include "VeltoPlatform/linux/LinuxFolders.h"
#include "veltoctl/CommandLine.h"

#include <unistd.h>

namespace {

/// Becomes the program for these commands, which is among the helpers, or beside this one in a bundle.
int becomeLocal(char** argv) {
    const auto helpers = velto::InstallTree::helpers();
    const auto programs = velto::InstallTree::programs();
    for (const auto& folder : {helpers, programs})
        if (folder.is_absolute()) // never what lies in the present folder
            ::execv((folder / "veltoctl-local").c_str(), argv);
    velto::ctl::Output::message(programs.empty() ? "there is no /proc, by which veltoctl-local is found"
                                                 : "there is no veltoctl-local in " + helpers.string() +
                                                       " nor in " + programs.string());
    return velto::ctl::kFailed;
}

} // namespace

int main(int argc, char** argv) {
    velto::LinuxFolders folders(argv[0]);
    velto::Platform platform;
    platform.folders = &folders;
    velto::installPlatform(platform);
    return velto::ctl::runCommandLine(
        argc, argv, [argv](const velto::ctl::Arguments& arguments, velto::ctl::Output& output) {
            return isLocal(arguments) ? becomeLocal(argv) : run(arguments, output);
        });
}
