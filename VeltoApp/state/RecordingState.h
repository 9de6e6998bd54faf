// The recordings on disk, one that is being made by hand, and one that is played.
#pragma once

#include "VeltoShared/audio/AudioPlayback.h"
#include "VeltoShared/audio/WavRecorder.h"
#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/Published.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

/// Held by `std::shared_ptr`; main thread only. Folder and files are read off it.
class RecordingState : public ObservableObject, public std::enable_shared_from_this<RecordingState> {
  public:
    struct File {
        std::string name;
        std::uintmax_t size = 0; ///< bytes
        bool operator==(const File&) const = default;
    };

    struct Playing {
        std::string name;
        double position = 0; ///< s from the recording's begin
        bool operator==(const Playing&) const = default;
    };

    RecordingState() = default;
    /// What is being recorded until then is a whole file.
    ~RecordingState();

    Published<std::vector<File>> files{*this}; ///< those in `AppPaths::recordings()`, by name
    Published<bool> recording{*this, false};
    Published<std::string> status{*this}; ///< one line about the last recording or playback
    /// The recording that was to be played and could not be, until the next one is asked for; `status` says
    /// so.
    Published<std::string> unplayable{*this};
    /// What is being played, ten times a second; none when it has ended or was stopped.
    Published<std::optional<Playing>> playing{*this};
    /// Length of a recording at most, s.
    double maxSeconds = 300;

    /// Lists the folder again, soon after; one that cannot be read is empty.
    void refresh();
    /// Records a device, `AudioState::agentMic` when none is given, into a file named after the second in
    /// which it began, for `maxSeconds` at most. Nothing while one runs.
    void start(const std::optional<std::string>& device = {});
    /// Waits for the disk. What could not be written is told in the log.
    void stop();
    /// Ends what is played and plays the recording of this name, soon after, on a device; on the default
    /// output when that is blank. A name is that of a file in the folder, no path. From a place in it, s; a
    /// place behind its end plays nothing. The file is read while it plays; where it has been cut off it
    /// ends.
    void play(std::string name, std::string device, double from = 0);
    /// Ends what is played, or is about to be.
    void stopPlaying();

  private:
    struct Feed;
    static asio::awaitable<void> list(std::weak_ptr<RecordingState> weak, std::uint64_t number);
    static asio::awaitable<void> begin(std::weak_ptr<RecordingState> weak, std::uint64_t number,
                                       std::string name, std::string device, double from);
    static asio::awaitable<void> feed(std::weak_ptr<RecordingState> weak, std::uint64_t number, Feed sound);
    void follow(std::uint64_t number, double position);
    void playedToEnd(std::uint64_t number);
    void endRecording();
    void endPlayback();

    std::unique_ptr<WavRecorder> recorder_;
    std::unique_ptr<Timer> autoStop_;
    /// Kept when it has ended by itself, until the next one.
    std::shared_ptr<AudioPlayback> playback_;
    std::uint64_t lastList_ = 0;
    std::uint64_t lastPlay_ = 0;
};

} // namespace velto
