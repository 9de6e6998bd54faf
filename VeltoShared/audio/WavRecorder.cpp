#include "VeltoShared/audio/WavRecorder.h"

#include "VeltoShared/audio/SampleRing.h"
#include "VeltoShared/audio/WavFile.h"
#include "VeltoShared/core/Executors.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace velto {
namespace {

constexpr std::uint32_t kChannels = 2;
constexpr auto kWriteInterval = std::chrono::milliseconds(100);
constexpr int kWritesPerHeader = 5;
/// More than 16 s at 16 kHz: as long as a disk may stall before sound is lost.
constexpr std::size_t kWaiting = std::size_t{1} << 18;

} // namespace

/// What the capture, the writer and the recorder share.
struct WavRecorder::Recording {
    Recording(const std::filesystem::path& path, double rate) : file(path, rate) {}

    /// The real-time thread.
    void hear(std::span<const std::int16_t> samples) {
        const auto taken = waiting.push(samples);
        if (taken < samples.size())
            dropped.fetch_add(samples.size() - taken, std::memory_order_relaxed);
    }
    void write() {
        const std::lock_guard guard(lock);
        if (isOver)
            return;
        waiting.popAll([this](std::span<const std::int16_t> samples) { file.append(samples); });
        if (++writes % kWritesPerHeader == 0)
            file.refreshHeader();
    }

    SampleRing waiting{kWaiting};
    std::atomic<std::uint64_t> dropped = 0; ///< for which there was no room
    std::atomic<bool> isWriting = false;    ///< or about to be
    std::mutex lock;                        ///< of what follows
    WavFile file;
    int writes = 0;
    bool isOver = false;
};

std::unique_ptr<WavRecorder> WavRecorder::open(const std::string& deviceName, double rate,
                                               const std::filesystem::path& url) {
    auto recording = std::make_shared<Recording>(url, rate);
    std::unique_ptr<WavRecorder> recorder(new WavRecorder(recording, url));
    recorder->capture_ =
        AudioCapture::open(deviceName, rate, kChannels,
                           [recording](std::span<const std::int16_t> samples) { recording->hear(samples); });
    if (!recorder->capture_)
        return nullptr;
    return recorder;
}

WavRecorder::WavRecorder(std::shared_ptr<Recording> recording, std::filesystem::path url)
    : recording_(std::move(recording)), url_(std::move(url)) {}

WavRecorder::~WavRecorder() {
    capture_.reset();
    timer_.reset();
    const std::lock_guard guard(recording_->lock);
    recording_->isOver = true;
}

void WavRecorder::start() {
    if (!capture_)
        return;
    capture_->start();
    timer_ = Clock::shared().repeat(kWriteInterval, [recording = recording_] {
        if (recording->isWriting.exchange(true))
            return; // a stalled disk needs no second visitor
        Blocking::post([recording] {
            recording->write();
            recording->isWriting = false;
        });
    });
}

void WavRecorder::stop() {
    capture_.reset();
    timer_.reset();
    recording_->write();
    const std::lock_guard guard(recording_->lock);
    if (std::exchange(recording_->isOver, true))
        return;
    recording_->file.finish();
    // Nobody touches the file any more, and a disk may take its time.
    Blocking::post([recording = recording_] { recording->file.sync(); });
}

std::string WavRecorder::trouble() const {
    const std::lock_guard guard(recording_->lock);
    const auto dropped = recording_->dropped.load();
    const auto& file = recording_->file;
    const auto missing = dropped + file.lost();
    if (missing == 0 && file.trouble().empty())
        return {};
    const auto& why = file.trouble().empty() ? "the disk was too slow" : file.trouble();
    return std::to_string(missing) + " samples could not be written: " + why;
}

} // namespace velto
