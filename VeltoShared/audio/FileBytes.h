// A file's bytes, through a window that moves over it.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"
#include "VeltoShared/audio/ByteSource.h"

#include <filesystem>
#include <vector>

namespace velto {

/// Of the size that the file has when it is opened; takes 128 KB. Blocks where the disk does. One thread.
class FileBytes final : public ByteSource {
  public:
    /// Empty when it is no regular file that can be read.
    explicit FileBytes(const std::filesystem::path& path);

    std::uint64_t size() const override { return size_; }
    std::span<const std::byte> bytes(std::uint64_t offset, std::size_t count) override;

  private:
    void fill(std::uint64_t offset, std::size_t count);

    FileDescriptor file_;
    std::uint64_t size_ = 0;
    std::vector<std::byte> window_;
    std::uint64_t begin_ = 0;
    std::size_t filled_ = 0;
};

} // namespace velto
