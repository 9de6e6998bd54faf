// Where sound drivers are installed for all users of the computer, and how an administrator's shell does it.
#pragma once

#include <filesystem>
#include <string>

namespace velto {

/// The commands of a line for /bin/sh. Operands follow a command after a blank, quoted by `shellWord`; the
/// line separates commands by "; ". What a command has to say, failures included, is on the line's standard
/// output or error.
struct DriverVerbs {
    std::string preamble;   ///< in front of the line, ready for the first command; may be empty
    std::string makeFolder; ///< FOLDER: makes it and its parents where they are missing
    std::string copy;       ///< BUNDLE PLACE: the bundle, whole, in place of what is there
    std::string clear;   ///< PLACE: what was copied there becomes the system's own, for sound servers to read
    std::string remove;  ///< PLACE: where there is nothing, nothing happens
    std::string restart; ///< no operand: the sound server starts again and reads the drivers
};

/// All operations: any thread. Nothing is changed here.
class DriverPlace {
  public:
    virtual ~DriverPlace() = default;

    /// The plug-in folder, absolute; a driver is a folder in it. It need not exist.
    virtual std::filesystem::path folder() = 0;
    virtual DriverVerbs verbs() = 0;
};

} // namespace velto
