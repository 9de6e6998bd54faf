// Bytes that are looked at piece by piece, wherever they lie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace velto {

/// One thread.
class ByteSource {
  public:
    virtual ~ByteSource() = default;
    virtual std::uint64_t size() const = 0;
    /// A view that is valid until the next call; shorter than asked for where the bytes end, or cannot be
    /// read.
    virtual std::span<const std::byte> bytes(std::uint64_t offset, std::size_t count) = 0;
};

/// Somebody else's memory.
class MemoryBytes final : public ByteSource {
  public:
    explicit MemoryBytes(std::span<const std::byte> memory) : memory_(memory) {}
    std::uint64_t size() const override { return memory_.size(); }
    std::span<const std::byte> bytes(std::uint64_t offset, std::size_t count) override {
        const auto rest = memory_.subspan(offset < memory_.size() ? offset : memory_.size());
        return rest.first(count < rest.size() ? count : rest.size());
    }

  private:
    std::span<const std::byte> memory_;
};

} // namespace velto
