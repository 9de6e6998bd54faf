// The phone's ear and mouth.
#include "rehearsal/callee/PhoneAudio.h"

#include "rehearsal/callee/PulseDirection.h"
#include "rehearsal/process/Reports.h"

#include <algorithm>
#include <mutex>

namespace velto::rehearsal {
namespace {

constexpr std::uint32_t kFragment = 10; ///< ms
constexpr std::uint32_t kQueue = 40;    ///< ms

} // namespace

struct PhoneAudio::Impl {
    Callbacks callbacks;
    mutable std::mutex mutex;
    Samples queue;
    std::size_t head = 0;
    Measures measures;
    pa_threaded_mainloop* mainloop = pa_threaded_mainloop_new();
    std::unique_ptr<PulseDirection> ear;
    std::unique_ptr<PulseDirection> mouth;

    void arrived(std::span<const std::int16_t> samples, std::int64_t latency) {
        {
            const std::lock_guard lock(mutex);
            measures.framesHeard += samples.size();
            measures.peakHeard = std::max(measures.peakHeard, peak(samples));
        }
        callbacks.heard(Samples(samples.begin(), samples.end()),
                        monotonicNow() - std::chrono::microseconds(latency));
    }

    void wanted(std::span<std::int16_t> samples, std::int64_t latency) {
        std::size_t count = 0;
        bool ended = false;
        {
            const std::lock_guard lock(mutex);
            count = std::min(samples.size(), queue.size() - head);
            std::copy_n(queue.begin() + static_cast<std::ptrdiff_t>(head), count, samples.begin());
            measures.framesSaid += count;
            measures.peakSaid = std::max(measures.peakSaid, peak(samples.first(count)));
            head += count;
            ended = count > 0 && head == queue.size();
            if (ended) {
                queue.clear();
                head = 0;
            }
        }
        std::fill(samples.begin() + static_cast<std::ptrdiff_t>(count), samples.end(), std::int16_t{0});
        if (ended)
            callbacks.said(monotonicNow() + std::chrono::microseconds(latency) +
                           std::chrono::microseconds(count * 1'000'000 / mouthRate));
    }
};

PhoneAudio::PhoneAudio(Callbacks callbacks) : impl_(std::make_unique<Impl>()) {
    auto& impl = *impl_;
    impl.callbacks = std::move(callbacks);
    pa_threaded_mainloop_start(impl.mainloop);
    pa_threaded_mainloop_lock(impl.mainloop);
    impl.ear = std::make_unique<PulseDirection>(
        impl.mainloop, earRate, kFragment,
        PulseDirection::Callbacks{[&impl](auto samples, auto latency) { impl.arrived(samples, latency); },
                                  {}});
    impl.mouth = std::make_unique<PulseDirection>(
        impl.mainloop, mouthRate, kQueue, PulseDirection::Callbacks{{}, [&impl](auto samples, auto latency) {
                                                                        impl.wanted(samples, latency);
                                                                    }});
    pa_threaded_mainloop_unlock(impl.mainloop);
}

PhoneAudio::~PhoneAudio() {
    pa_threaded_mainloop_lock(impl_->mainloop);
    impl_->ear.reset();
    impl_->mouth.reset();
    pa_threaded_mainloop_unlock(impl_->mainloop);
    pa_threaded_mainloop_stop(impl_->mainloop);
    pa_threaded_mainloop_free(impl_->mainloop);
}

void PhoneAudio::say(Samples samples) {
    const std::lock_guard lock(impl_->mutex);
    impl_->queue.insert(impl_->queue.end(), samples.begin(), samples.end());
}

PhoneAudio::Measures PhoneAudio::measures() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->measures;
}

} // namespace velto::rehearsal
