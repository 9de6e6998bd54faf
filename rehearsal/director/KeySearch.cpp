#include "rehearsal/director/KeySearch.h"

#include "rehearsal/process/ProcessTree.h"
#include "rehearsal/process/TextFile.h"

namespace velto::rehearsal {

namespace fs = std::filesystem;

void KeySearch::lookAtProcess(const char* title, pid_t pid) {
    if (look(title, pid))
        evidence_.searchedForKeys.insert(title);
    for (const auto descendant : descendantsOf(pid))
        look(std::string("a process that descends from ") + title, descendant);
}

bool KeySearch::look(const std::string& whose, pid_t pid) {
    const auto folder = fs::path("/proc") / std::to_string(pid);
    const auto commandLine = readFile(folder / "cmdline").value_or("");
    const auto environment = readFile(folder / "environ").value_or("");
    if (keys_.isIn(commandLine))
        evidence_.placesWithKey.insert("the command line of " + whose);
    if (keys_.isIn(environment))
        evidence_.placesWithKey.insert("the environment of " + whose);
    // Empty where a process has ended; no program of a rehearsal is without either.
    return !commandLine.empty() && !environment.empty();
}

void KeySearch::lookAtFolder(const fs::path& folder) {
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error))
        if (std::error_code ignored; entry->is_regular_file(ignored))
            lookAtFile(entry->path());
}

void KeySearch::lookAtFile(const fs::path& file) {
    if (keys_.isIn(readFile(file).value_or("")))
        evidence_.placesWithKey.insert("the file " + file.string());
}

} // namespace velto::rehearsal
