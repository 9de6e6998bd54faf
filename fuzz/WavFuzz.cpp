// WAV files: any bytes are read within their bounds, or refused; what we write of them is read back.
#include "VeltoShared/audio/Wav.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

using namespace velto;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemoryBytes bytes(std::as_bytes(std::span(data, size)));
    const auto sound = WavFormat::find(bytes);
    if (!sound)
        return 0;
    require(sound->channels() >= 1 && sound->frames() * 2 * sound->channels() <= size);
    const auto mono = Wav::toMono16(*sound, {});
    require(mono && mono->samples.size() == sound->frames());
    if (mono->samples.empty() || sound->rate() == 0 || sound->rate() >= 1U << 31)
        return 0;
    const double rate = sound->rate();
    require(Wav::toMono16(*sound, rate * 2)->samples.size() == 2 * sound->frames());
    require(Wav::toMono16(*sound, rate / 2)->samples.size() == sound->frames() / 2);

    const auto head = WavFormat::header(static_cast<std::uint32_t>(sound->frames()), rate);
    std::vector<std::byte> file(head.begin(), head.end());
    const auto samples = std::as_bytes(std::span(mono->samples));
    file.insert(file.end(), samples.begin(), samples.end());
    MemoryBytes written(file);
    const auto again = WavFormat::find(written);
    require(again && again->channels() == 1 && again->rate() == sound->rate());
    require(Wav::toMono16(*again, {})->samples == mono->samples);
    return 0;
}
