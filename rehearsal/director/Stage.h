// Everything that runs during a rehearsal, watched by one thread.
#pragma once

#include "rehearsal/director/Guardian.h"
#include "rehearsal/process/ChildProcess.h"

#include <boost/json/object.hpp>

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <string>

namespace velto::rehearsal {

/// Hands over what the programs report, and notices at once when one of them ends, when a signal asks to
/// stop, and when the guardian is gone. One thread.
class Stage {
  public:
    using Duration = std::chrono::milliseconds;
    using Heard = std::function<void(const boost::json::object&)>;

    explicit Stage(const GuardianLink& guardian);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// None when it cannot be started, which is a failure of the stage. Each line of JSON that it writes goes
    /// to `heard`.
    ChildProcess* add(const ChildProgram& program, Heard heard);
    /// A program that somebody else starts, and that reports through a socket at this path. `left`: its end
    /// of the connection is closed. False when the socket cannot be made, which is a failure of the stage.
    bool expect(const std::filesystem::path& socket, Heard heard, std::function<void()> left);
    /// Kills one of the programs; its end is no failure.
    void kill(ChildProcess& process);
    /// A process that somebody else has started and will reap.
    void watch(const std::string& title, pid_t pid);
    /// Its end is no failure any more.
    void unwatch(pid_t pid);

    /// Lets things happen until `done` answers true (asked again after each event and every 20 ms) or the
    /// time is over; answers whether it is done. False at once after a failure.
    bool waitUntil(const std::function<bool()>& done, Duration limit);
    /// Asks all programs to end, the last one first, and kills those that take too long. Their ends are no
    /// failures any more. Answers a sentence for each that did not end as asked: with exit code 0 or by
    /// SIGTERM.
    std::vector<std::string> end();
    /// The same for a process that somebody else has started and that came to this one when its parent ended;
    /// it may have ended by itself before. Others are left alone. Reaps nothing.
    std::optional<std::string> endOther(const std::string& title, pid_t pid);

    void fail(const std::string& reason);
    /// Why the rehearsal cannot go on; empty while it can.
    const std::string& failure() const { return failure_; }
    bool guardianGone() const { return guardianGone_; }
    /// Exit code for a stop by signal (128 + its number); 0 without one.
    int stopCode() const { return stopCode_; }

  private:
    struct Actor {
        ChildProcess process;
        Heard heard;
        bool over = false;
    };
    struct Entrance {
        FileDescriptor listener;
        Heard heard;
        std::function<void()> left;
        std::list<LineReader> visitors;
    };
    struct Watched {
        std::string title;
        pid_t pid;
        int descriptor;
    };

    void pump(Duration limit);
    /// How long a program may take to end.
    Duration timeToEnd() const;
    static void tell(const std::vector<std::string>& lines, const Heard& heard);
    void checkEnds();
    void receiveVisitors();

    const GuardianLink& guardian_;
    int signals_;
    std::list<Actor> actors_;
    std::list<Entrance> entrances_;
    std::list<Watched> watched_;
    std::string failure_;
    bool ending_ = false;
    bool guardianGone_ = false;
    int stopCode_ = 0;
};

} // namespace velto::rehearsal
