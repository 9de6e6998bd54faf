#include "VeltoPlatform/simulated/SimulatedAdmin.h"

namespace velto {
namespace {

class TextPipe : public AdminPipe {
  public:
    explicit TextPipe(std::string text) : text_(std::move(text)) {}

    std::size_t read(std::span<char> bytes) override {
        const auto count = text_.copy(bytes.data(), bytes.size(), read_);
        read_ += count;
        return count;
    }

  private:
    std::string text_;
    std::size_t read_ = 0;
};

std::int32_t next(std::deque<std::int32_t>& answers) {
    if (answers.empty())
        return AdminStatus::success;
    const auto answer = answers.front();
    answers.pop_front();
    return answer;
}

} // namespace

std::int32_t SimulatedAdmin::createAuthorization() {
    const auto answer = next(createAnswers);
    created_ = answer == AdminStatus::success;
    return answer;
}

std::int32_t SimulatedAdmin::preauthorize() {
    ++asked;
    return next(preauthorizeAnswers);
}

std::int32_t SimulatedAdmin::execute(const std::string& commandLine, std::unique_ptr<AdminPipe>& pipe) {
    const auto answer = next(executeAnswers);
    if (answer != AdminStatus::success)
        return answer;
    commands.push_back(commandLine);
    if (auto output = shell ? shell(commandLine) : std::string())
        pipe = std::make_unique<TextPipe>(std::move(*output));
    return answer;
}

} // namespace velto
