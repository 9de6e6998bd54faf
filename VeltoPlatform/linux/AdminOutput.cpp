#include "VeltoPlatform/linux/AdminOutput.h"

namespace velto {

AdminOutput::~AdminOutput() {
    if (link_)
        link_->quiet();
}

std::size_t AdminOutput::read(std::span<char> bytes) {
    if (read_ == waiting_.size() && link_)
        receive();
    const auto count = waiting_.copy(bytes.data(), bytes.size(), read_);
    read_ += count;
    return count;
}

void AdminOutput::receive() {
    auto message = link_->receive();
    read_ = 0;
    if (!message) {
        const std::string gone = "the helper ended, or failed, before the command's end";
        trouble_->note(gone);
        waiting_ = "velto: " + gone + "\n";
    } else {
        waiting_ = std::move(message->output);
        if (message->exitStatus.value_or(0) != 0)
            trouble_->note("a command ended with exit status " + std::to_string(*message->exitStatus));
    }
    if (!message || message->exitStatus)
        link_.reset();
}

} // namespace velto
