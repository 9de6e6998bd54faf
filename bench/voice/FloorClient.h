// The floor: a blocking OpenSSL loop that does no more than has to be done.
#pragma once

#include "bench/voice/Service.h"

#include <openssl/ssl.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace velto::bench {

/// Reads frames into one buffer, finds the audio by its quotes, decodes it and copies it out. No check of
/// anything; trusts any certificate.
class FloorClient {
  public:
    FloorClient(std::uint16_t port, std::string_view audioKey);
    ~FloorClient();
    FloorClient(const FloorClient&) = delete;
    FloorClient& operator=(const FloorClient&) = delete;

    /// One round of `messages`: microseconds of CPU a message.
    double round(int messages);

  private:
    void sendText(std::string_view shortText);
    void fill();
    std::string_view receive();

    std::string_view audioKey_;
    SSL_CTX* context_;
    SSL* tls_;
    int socket_;
    std::vector<char> buffer_ = std::vector<char>(1 << 20);
    std::size_t filled_ = 0;
    std::size_t used_ = 0;
    std::vector<std::byte> decoded_ = std::vector<std::byte>(kPcmBytes + 3);
    std::vector<std::byte> copied_ = std::vector<std::byte>(kPcmBytes + 3);
};

} // namespace velto::bench
