// Where this program's companions are: relative to the program itself, in a build folder as in an
// installation.
#pragma once

#include <filesystem>

namespace velto::InstallTree {

/// All operations: any thread; empty when the running program's path cannot be told. They stay true while an
/// upgrade replaces the program.
/// The folder of this program and of the others that users start: PREFIX/bin, or a bundle's "MacOS".
std::filesystem::path programs();
/// Programs that only programs start: PREFIX/libexec/velto.
std::filesystem::path helpers();
/// What is read: PREFIX/share/velto, or a bundle's "Resources".
std::filesystem::path resources();

} // namespace velto::InstallTree
