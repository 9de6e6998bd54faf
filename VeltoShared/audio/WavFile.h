// A WAV file that grows: mono, 16-bit.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace velto {

/// Blocks where the disk does. One thread at a time.
class WavFile {
  public:
    /// Makes or empties the file, which only its user can read, and reserves the header. Where that fails,
    /// samples are counted and nothing is written. `rate` in Hz.
    WavFile(const std::filesystem::path& path, double rate);

    void append(std::span<const std::int16_t> samples);
    /// Writes the sizes so far into the header, for a reader that comes before the end, or after a crash.
    void refreshHeader();
    /// The final header. A file that was deleted in the meantime is a trouble.
    void finish();
    /// The file's contents to storage, then closes it. Waits for the disk.
    void sync();

    /// Samples in the file, or counted for one that could not be made; below 2³¹.
    std::uint32_t frames() const { return frames_; }
    /// Samples that could not be written.
    std::uint64_t lost() const { return lost_; }
    /// Why, in the system's words; empty when nothing was lost.
    const std::string& trouble() const { return trouble_; }

  private:
    bool write(std::span<const std::byte> bytes, std::uint64_t offset);
    void fail();

    FileDescriptor file_;
    double rate_;
    std::uint32_t frames_ = 0;
    std::uint64_t lost_ = 0;
    std::string trouble_;
};

} // namespace velto
