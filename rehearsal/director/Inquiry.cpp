// Asks the application over its control socket.
#include "rehearsal/director/Inquiry.h"

#include "VeltoShared/control/ControlClient.h"

namespace velto::rehearsal {

Inquiry::Inquiry() : thread_([this] { work(); }) {}

Inquiry::~Inquiry() {
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

std::future<Inquiry::Reply> Inquiry::ask(boost::json::object request) {
    std::packaged_task<Reply()> task(
        [request = std::move(request)] { return ControlClient::request(request); });
    auto reply = task.get_future();
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wake_.notify_one();
    return reply;
}

void Inquiry::work() {
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [this] { return over_ || !tasks_.empty(); });
        if (over_)
            return;
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}

} // namespace velto::rehearsal
