// The command line over the control socket. Quick to start: what brings large libraries is another program.
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxFolders.h"
#include "veltoctl/CommandLine.h"

#include <unistd.h>

#include <filesystem>

namespace {

/// Becomes the program for these commands, which is beside this one or where helpers are installed.
int becomeLocal(char** argv) {
    std::error_code error;
    const auto here = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const auto& folder : {here, std::filesystem::path(VELTO_LIBEXEC)})
        if (folder.is_absolute()) // never what lies in the present folder
            ::execv((folder / "veltoctl-local").c_str(), argv);
    velto::ctl::Output::message("there is no veltoctl-local in " + here.string() + " nor in " VELTO_LIBEXEC);
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
