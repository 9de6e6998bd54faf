#include "VeltoPlatform/linux/PulseTap.h"

#include "VeltoPlatform/linux/ProcessFiles.h"

#include <algorithm>
#include <utility>

namespace velto {

PulseTap::PulseTap(std::string uid, pid_t process) : uid_(std::move(uid)), process_(process) {}

void PulseTap::update(const PulsePlayers::Players& everyone) {
    PulsePlayers::Players players;
    std::ranges::copy_if(everyone, std::back_inserter(players), [&](const PulsePlayer& player) {
        return ProcessFiles::descends(player.pid, process_);
    });
    if (players == players_)
        return;
    players_ = std::move(players);
    for (auto* reader : readers_)
        reader->playersChanged();
}

void PulseTap::add(Reader& reader) {
    readers_.push_back(&reader);
}

void PulseTap::remove(Reader& reader) {
    std::erase(readers_, &reader);
}

} // namespace velto
