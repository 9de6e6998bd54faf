// Whole lines from a pipe or a socket, as they arrive.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"

#include <string>
#include <vector>

namespace velto::rehearsal {

/// Never blocks. One thread.
class LineReader {
  public:
    /// Owns the descriptor and makes it non-blocking; without one there are no lines.
    explicit LineReader(FileDescriptor source);

    /// Readable when something has arrived, and at the end; −1 once the end has been read.
    int descriptor() const { return source_.get(); }
    /// Whole lines that have arrived since.
    std::vector<std::string> readLines();

  private:
    FileDescriptor source_;
    std::string buffer_;
};

} // namespace velto::rehearsal
