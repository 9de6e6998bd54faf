// The events that the OpenAI Realtime API (beta, "realtime=v1") sends to its client.
#pragma once

#include "rehearsal/server/ClientMessage.h"
#include "rehearsal/server/ServerProtocol.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velto::rehearsal {

/// Writes the events of one session in the order in which the service sends them, those included that a
/// client may ignore, and keeps the identifiers that tie them together: of events, conversation items and
/// responses. One thread.
class OpenAIServerMessages {
  public:
    using Position = ServerProtocol::Position;

    explicit OpenAIServerMessages(ServerProtocol::Send send) : send_(std::move(send)) {}

    void sessionCreated(std::string_view model);
    void sessionUpdated(const ConfigurationMessage& configuration);
    /// An item that the client has made.
    void itemCreated(const ClientMessage& item);

    void speechStarted(Position at);
    /// The speech becomes an item, and the item's transcript follows.
    void speechStopped(Position at, std::string_view transcript);

    void responseCreated();
    /// The response's spoken message.
    void messageAdded();
    /// 24 kHz mono.
    void audioDelta(std::span<const std::int16_t> samples);
    void transcriptDelta(std::string_view fragment);
    void messageDone(bool whole);
    /// A call of `end_call`, after the message.
    void functionCall(std::string_view callID, std::string_view arguments);
    void responseDone(bool cancelled);

  private:
    void emit(std::string_view type, boost::json::object members = {});
    void emitSession(std::string_view type);
    /// An event about the response's current output item.
    void emitOutput(std::string_view type, boost::json::object members);
    void emitContent(std::string_view type, boost::json::object members = {});
    void emitItem(boost::json::object item);
    std::string freshItem();
    boost::json::object message(std::string_view status) const;
    boost::json::object call(std::string_view status, std::string_view callID,
                             std::string_view arguments) const;
    boost::json::object response(std::string_view status) const;

    ServerProtocol::Send send_;
    boost::json::object session_;
    std::uint64_t events_ = 0;
    std::uint64_t items_ = 0;
    std::uint64_t responses_ = 0;
    std::string previousItem_; ///< the last one of the conversation
    std::string speechItem_;
    std::string responseID_;
    std::string outputItem_;
    std::string transcript_;
    boost::json::array output_; ///< the response's finished items
};

} // namespace velto::rehearsal
