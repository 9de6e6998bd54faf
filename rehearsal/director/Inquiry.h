// Asks the application over its control socket, without letting a slow answer hold up the asker.
#pragma once

#include <boost/json/object.hpp>

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <optional>
#include <thread>

namespace velto::rehearsal {

/// Requests are asked one after the other on a thread of its own. The destructor waits for the request that
/// is under way, so the application must be able to answer, or be dead, by then.
class Inquiry {
  public:
    using Reply = std::optional<boost::json::object>;

    Inquiry();
    ~Inquiry();
    Inquiry(const Inquiry&) = delete;
    Inquiry& operator=(const Inquiry&) = delete;

    /// None when the application cannot be reached.
    std::future<Reply> ask(boost::json::object request);

  private:
    void work();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::packaged_task<Reply()>> tasks_;
    bool over_ = false;
    std::thread thread_;
};

} // namespace velto::rehearsal
