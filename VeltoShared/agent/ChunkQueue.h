// The way of captured chunks from the real-time thread to the agent: bounded, newest kept, no allocation.
#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace velto {

namespace asio = boost::asio;

/// All room is reserved at construction. A chunk pushed while all slots wait pushes out the oldest one.
class ChunkQueue {
  public:
    static constexpr std::size_t kCapacity = 50;    ///< chunks
    static constexpr std::size_t kMaxFrames = 8192; ///< samples a chunk; what is longer is cut

    explicit ChunkQueue(const asio::any_io_executor& consumer);
    /// False when there was no descriptor for it; then it delivers nothing.
    bool isOpen() const { return event_.is_open(); }

    /// Any thread, also a real-time one: a short lock, a copy and one system call.
    void push(std::span<const std::int16_t> samples);
    /// Ends the queue at once; waiting chunks are dropped. Any thread.
    void finish();

    /// Puts the next chunk into `chunk`; false at the end of the queue. One coroutine, on the executor given.
    asio::awaitable<bool> next(std::vector<std::int16_t>& chunk);

  private:
    void wake();

    std::mutex mutex_;
    std::vector<std::vector<std::int16_t>> slots_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
    bool finished_ = false;
    asio::posix::stream_descriptor event_; ///< an eventfd: waking through it allocates nothing
};

} // namespace velto
