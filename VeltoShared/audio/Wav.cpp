// Straight from the file to the result, a block at a time: no copy of the file or of its mono sound.
#include "VeltoShared/audio/Wav.h"

#include "VeltoShared/audio/FileBytes.h"
#include "VeltoShared/audio/MonoSound.h"

#include <new>

namespace velto::Wav {

std::optional<Sound> toMono16(const WavFormat::Sound& sound, std::optional<double> targetRate) {
    auto mono = MonoSound::of(sound, targetRate);
    if (!mono)
        return std::nullopt;
    Sound whole{mono->rate(), std::vector<std::int16_t>(mono->size())};
    if (!mono->read(0, whole.samples))
        return std::nullopt;
    return whole;
}

std::optional<Sound> readMono16(const std::filesystem::path& url, std::optional<double> targetRate) {
    try {
        FileBytes file(url);
        const auto sound = WavFormat::find(file);
        return sound ? toMono16(*sound, targetRate) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace velto::Wav
