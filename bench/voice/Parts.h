// The parts of the voice benchmark. Each prints its figures with what they aim at.
#pragma once

#include "bench/voice/Figures.h"
#include "bench/voice/Service.h"

namespace velto::bench {

/// Base64 against memcpy, from memory and from the cache.
void benchBase64();

/// Received audio against the bare OpenSSL loop. Answers the client's CPU a message.
Figure benchInbound(const Service& service);

/// The same messages in the provider's own JavaScript SDK; one line that says why where it cannot run.
void benchSdk(const Service& service, const Figure& client);

/// Sending a chunk.
void benchOutbound(const Service& service);

/// From the start of a process to its first audio.
void benchStart(const Service& service);

/// Resident memory of a process that has received much.
void benchMemory(const Service& service);

} // namespace velto::bench
