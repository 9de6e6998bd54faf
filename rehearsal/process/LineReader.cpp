#include "rehearsal/process/LineReader.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace velto::rehearsal {

LineReader::LineReader(FileDescriptor source) : source_(std::move(source)) {
    if (source_)
        ::fcntl(source_.get(), F_SETFL, ::fcntl(source_.get(), F_GETFL) | O_NONBLOCK);
}

std::vector<std::string> LineReader::readLines() {
    std::vector<std::string> lines;
    std::array<char, 16384> bytes{};
    ssize_t count = 0;
    while (source_ && (count = ::read(source_.get(), bytes.data(), bytes.size())) > 0)
        buffer_.append(bytes.data(), static_cast<std::size_t>(count));
    if (source_ && count == 0)
        source_.close();
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = buffer_.find('\n', begin)) != std::string::npos; begin = end + 1)
        lines.push_back(buffer_.substr(begin, end - begin));
    buffer_.erase(0, begin);
    return lines;
}

} // namespace velto::rehearsal
