#include "rehearsal/PhoneRegistration.h"

#include "rehearsal/process/TextFile.h"

namespace velto::rehearsal {
namespace {

constexpr const char* kDesktopFile = "velto-phone.desktop";

} // namespace

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

bool registerPhone(const PhoneRegistration& phone, const Environment& folders) {
    std::string exec = "/usr/bin/env";
    for (const auto& [name, value] : phone.environment)
        exec += " " + execWord(std::string(name).append("=").append(value));
    exec += " " + execWord(phone.program);
    const auto applications = std::filesystem::path(folders.at("XDG_DATA_HOME")) / "applications";
    std::error_code error;
    std::filesystem::create_directories(applications, error);
    return !error &&
           writePrivateFile(applications / kDesktopFile,
                            "[Desktop Entry]\nType=Application\nName=Phone\nExec=" + exec +
                                " %u\nMimeType=x-scheme-handler/tel-phoneapp;\n") &&
           writePrivateFile(std::filesystem::path(folders.at("XDG_CONFIG_HOME")) / "mimeapps.list",
                            std::string("[Default Applications]\nx-scheme-handler/tel-phoneapp=") +
                                kDesktopFile + "\n");
}

} // namespace velto::rehearsal
