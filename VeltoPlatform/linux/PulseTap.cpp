#include "VeltoPlatform/linux/PulseTap.h"

#include "VeltoPlatform/linux/ProcessFiles.h"

#include <algorithm>
#include <utility>

namespace velto {

PulseTap::PulseTap(std::string uid, pid_t process) : uid_(std::move(uid)), process_(process) {}

void PulseTap::muteWith(std::unique_ptr<PulseTapSink> sink) {
    sink_ = std::move(sink);
}

void PulseTap::end(PulseServer& server) {
    {
        PulseServer::Lock lock(server);
        if (sink_)
            sink_->bringHome();
        ofProcess_.clear();
        refresh();
    }
    if (!sink_)
        return;
    sink_->unload();
    // Units may hold this for longer, and a server that returns would get the sink again.
    PulseServer::Lock lock(server);
    sink_.reset();
}

void PulseTap::update(const PulsePlayers::Players& everyone) {
    // A stream stays the process's own when whoever stood between the two ends.
    const auto known = std::exchange(ofProcess_, {});
    std::ranges::copy_if(everyone, std::back_inserter(ofProcess_), [&](const PulsePlayer& player) {
        return std::ranges::find(known, player.index, &PulsePlayer::index) != known.end() ||
               ProcessFiles::descends(player.pid, process_);
    });
    refresh();
}

void PulseTap::refresh() {
    if (sink_ && !readers_.empty())
        sink_->park(ofProcess_);
    PulsePlayers::Players players;
    std::ranges::copy_if(ofProcess_, std::back_inserter(players),
                         [&](const PulsePlayer& player) { return !sink_ || sink_->isSettled(player.index); });
    if (players == players_)
        return;
    players_ = std::move(players);
    for (auto* reader : readers_)
        reader->playersChanged();
}

void PulseTap::add(Reader& reader) {
    readers_.push_back(&reader);
    refresh();
}

void PulseTap::remove(Reader& reader) {
    std::erase(readers_, &reader);
    if (sink_ && readers_.empty())
        sink_->bringHome();
    refresh();
}

} // namespace velto
