#include "VeltoApp/state/RecordingFiles.h"

#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioRouting.h"
#include "VeltoShared/audio/WavFormat.h"
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

Source::Source(const std::filesystem::path& path, double rate) : file(path) {
    if (const auto found = WavFormat::find(file))
        sound = MonoSound::of(*found, rate);
}

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
    Prepared prepared{std::string(trimBlanks(device)), nullptr};
    if (prepared.device.empty())
        prepared.device = AudioRouting::defaultOutputName();
    // A path could lead anywhere. A device is looked for here, where a silent server may be waited for.
    const bool isInFolder = name.find('/') == std::string::npos;
    if (isInFolder && AudioDevices::find(prepared.device))
        if (auto source = std::make_shared<Source>(AppPaths::recordings() / name, rate); source->sound)
            prepared.source = std::move(source);
    co_return prepared;
}

asio::awaitable<std::vector<std::int16_t>> piece(std::shared_ptr<Source> source, std::size_t first,
                                                 std::size_t count) {
    const auto end = source->sound->size();
    std::vector<std::int16_t> samples(std::min(count, end - std::min(first, end)));
    if (!source->sound->read(first, samples))
        samples.clear();
    co_return samples;
}

} // namespace velto::RecordingFiles
