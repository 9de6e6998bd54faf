// What the clients of the voice server sent, as lines of text: keys, audio and what is random left out.
#pragma once

#include "rehearsal/server/ApiKeys.h"
#include "rehearsal/server/HttpRequest.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace velto::rehearsal {

/// One section for each request, in the order of their begin: its line and fields, an empty line, then the
/// body or one line for each frame of the WebSocket; frames of audio that follow each other are one line with
/// their count. One thread.
class WireTranscript {
  public:
    class Section {
      public:
        /// A text frame.
        void text(std::string_view frame);
        void binary(std::size_t bytes);
        /// "ping" or "pong".
        void control(std::string_view name);
        /// The connection has ended; the code is 0 when the client did not close it.
        void closed(std::uint16_t code);

      private:
        friend class WireTranscript;
        struct Line {
            std::string kind;
            std::string rest;
            std::size_t count = 0; ///< of frames of audio; 0 for anything else
        };
        explicit Section(const ApiKeys& keys) : keys_(keys) {}
        void add(std::string_view kind, std::string rest);

        const ApiKeys& keys_;
        std::string head_;
        std::vector<Line> lines_;
    };

    explicit WireTranscript(ApiKeys keys) : keys_(std::move(keys)) {}
    WireTranscript(const WireTranscript&) = delete;
    WireTranscript& operator=(const WireTranscript&) = delete;

    /// Stays valid as long as the transcript.
    Section& begin(const HttpRequest& request);
    std::string text() const;

  private:
    ApiKeys keys_;
    std::list<Section> sections_;
};

} // namespace velto::rehearsal
