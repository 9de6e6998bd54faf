#include "rehearsal/director/Recording.h"

#include "VeltoShared/audio/Wav.h"
#include "rehearsal/signal/MarkListener.h"

namespace velto::rehearsal {

std::optional<Recording> hearRecording(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (entry.path().extension() == ".wav")
            files.push_back(entry.path());
    if (error || files.size() != 1)
        return {};
    const auto sound = Wav::readMono16(files.front());
    if (!sound || sound->rate <= 0)
        return {};
    Recording recording{static_cast<double>(sound->samples.size()) / sound->rate, {}};
    MarkListener listener(sound->rate, [&](const Mark& mark) { recording.heard.push_back(mark); });
    listener.feed(sound->samples);
    return recording;
}

} // namespace velto::rehearsal
