#include "rehearsal/PhoneRegistration.h"

#include "rehearsal/process/TextFile.h"

#include <algorithm>
#include <vector>

namespace velto::rehearsal {
namespace {

constexpr const char* kDesktopFile = "velto-phone.desktop";

/// A word of an "Exec" line, with whatever characters.
std::string execWord(const std::string& text) {
    std::string word = "\"";
    for (const char character : text) {
        // Quoted once for the words of the line and once more for the value of a key; "%" begins a code.
        if (character == '"' || character == '`' || character == '$')
            word += "\\\\";
        else if (character == '\\')
            word += "\\\\\\";
        else if (character == '%')
            word += '%';
        word += character;
    }
    return word + "\"";
}

bool isControl(char character) {
    return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
}

Failure failed(const std::string& what) {
    return {kErrorTransport, "the phone app could not be registered: " + what};
}

} // namespace

Result<> registerPhone(const PhoneRegistration& phone, const Environment& folders) {
    std::vector<std::string> words{"/usr/bin/env"};
    for (const auto& [name, value] : phone.environment)
        words.push_back(std::string(name).append("=").append(value));
    // By way of the shell: env takes a program with "=" in its path for one more variable.
    words.insert(words.end(), {"/bin/sh", "-c", "exec \"$0\" \"$@\"", phone.program});
    std::string exec;
    for (const auto& word : words) {
        if (std::any_of(word.begin(), word.end(), isControl))
            return failed("a line end, a tab or the like is in \"" + word + "\"");
        exec += execWord(word) + " ";
    }
    const auto applications = std::filesystem::path(folders.at("XDG_DATA_HOME")) / "applications";
    std::error_code error;
    std::filesystem::create_directories(applications, error);
    if (error ||
        !writePrivateFile(applications / kDesktopFile,
                          "[Desktop Entry]\nType=Application\nName=Phone\nExec=" + exec +
                              "%u\nMimeType=x-scheme-handler/tel-phoneapp;\n") ||
        !writePrivateFile(std::filesystem::path(folders.at("XDG_CONFIG_HOME")) / "mimeapps.list",
                          std::string("[Default Applications]\nx-scheme-handler/tel-phoneapp=") +
                              kDesktopFile + "\n"))
        return failed("its desktop file could not be written");
    return {};
}

} // namespace velto::rehearsal
