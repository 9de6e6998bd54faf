#include "VeltoApp/state/RecordingFiles.h"

#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioRouting.h"
#include "VeltoShared/audio/Wav.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/TextTrim.h"

#include <algorithm>
#include <filesystem>

namespace velto::RecordingFiles {
namespace {

namespace fs = std::filesystem;

std::optional<RecordingState::File> look(const fs::directory_entry& entry) {
    RecordingState::File file{entry.path().filename().string()};
    std::error_code error;
    if (!file.name.ends_with(".wav") || !entry.is_regular_file(error) || error)
        return std::nullopt;
    file.size = entry.file_size(error);
    if (error)
        return std::nullopt;
    return file;
}

} // namespace

asio::awaitable<std::vector<RecordingState::File>> list() {
    std::vector<RecordingState::File> files;
    std::error_code error;
    fs::directory_iterator entry(AppPaths::recordings(), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        if (auto file = look(*entry))
            files.push_back(std::move(*file));
    std::ranges::sort(files, {}, &RecordingState::File::name);
    co_return files;
}

asio::awaitable<Prepared> prepare(std::string name, std::string device, double rate) {
    Prepared prepared{std::string(trimBlanks(device)), std::nullopt};
    if (prepared.device.empty())
        prepared.device = AudioRouting::defaultOutputName();
    // A path could lead anywhere. A device is looked for here, where a silent server may be waited for.
    const bool isInFolder = name.find('/') == std::string::npos;
    if (isInFolder && AudioDevices::find(prepared.device))
        if (auto sound = Wav::readMono16(AppPaths::recordings() / name, rate))
            prepared.samples = std::move(sound->samples);
    co_return prepared;
}

} // namespace velto::RecordingFiles
