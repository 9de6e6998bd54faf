// Checks what the client sends.
#include "rehearsal/server/ClientMessages.h"

#include "rehearsal/server/PcmText.h"

#include <boost/json.hpp>

#include <algorithm>
#include <initializer_list>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

/// Thrown and caught in this file only.
struct Refused {
    std::string what;
};

/// A value and how it was reached.
class Node {
  public:
    Node(const json::value& value, std::string path) : value_(&value), path_(std::move(path)) {}

    /// The members of an object that has exactly these keys.
    std::vector<Node> members(std::initializer_list<std::string_view> keys) const {
        const auto* object = value_->if_object();
        if (object == nullptr)
            throw Refused{path_ + " is not an object"};
        for (const auto& entry : *object)
            if (std::find(keys.begin(), keys.end(), std::string_view(entry.key())) == keys.end())
                throw Refused{path_ + "." + std::string(entry.key()) + " is not a key of this message"};
        std::vector<Node> nodes;
        for (const auto key : keys) {
            const auto* member = object->if_contains(key);
            if (member == nullptr)
                throw Refused{path_ + "." + std::string(key) + " is missing"};
            nodes.emplace_back(*member, path_ + "." + std::string(key));
        }
        return nodes;
    }
    Node member(std::string_view key) const { return members({key}).front(); }

    /// The only element of a list.
    Node only() const {
        const auto* list = value_->if_array();
        if (list == nullptr || list->size() != 1)
            throw Refused{path_ + " is not a list of one element"};
        return {list->front(), path_ + "[0]"};
    }

    std::string text() const {
        if (!value_->is_string())
            throw Refused{path_ + " is not a text"};
        return std::string(value_->get_string());
    }
    std::string nonEmpty() const {
        auto found = text();
        if (found.empty())
            throw Refused{path_ + " is empty"};
        return found;
    }
    void is(const json::value& expected) const {
        // Compared as text: 500 and 500.0 are not the same on the wire.
        if (json::serialize(*value_) != json::serialize(expected))
            throw Refused{path_ + " is " + json::serialize(*value_).substr(0, 80) + " instead of " +
                          json::serialize(expected)};
    }
    void isText(std::string_view expected) const { is(json::value(json::string(expected))); }

    const json::value& value() const { return *value_; }
    const std::string& path() const { return path_; }

  private:
    const json::value* value_;
    std::string path_;
};

void checkActivityDetection(const Node& node) {
    const auto input = node.members({"automaticActivityDetection", "activityHandling"});
    const auto detection = input[0].members({"disabled", "silenceDurationMs"});
    detection[0].is(false);
    detection[1].is(500);
    input[1].isText("START_OF_ACTIVITY_INTERRUPTS");
}

void checkTools(const Node& node) {
    const auto function =
        node.only().member("functionDeclarations").only().members({"name", "description", "parameters"});
    function[0].isText("end_call");
    function[1].isText(
        "Hang up the phone call. Call this once the goal is complete and you have said goodbye.");
    const auto parameters = function[2].members({"type", "properties"});
    parameters[0].isText("OBJECT");
    const auto reason = parameters[1].member("reason").members({"type", "description"});
    reason[0].isText("STRING");
    reason[1].isText("Short reason the call is ending (e.g. 'goal met', 'no longer needed').");
}

SetupMessage parseSetup(const Node& node) {
    const auto setup = node.members({"model", "generationConfig", "systemInstruction", "realtimeInputConfig",
                                     "inputAudioTranscription", "outputAudioTranscription", "tools"});
    SetupMessage message;
    const auto model = setup[0].text();
    constexpr std::string_view prefix = "models/";
    if (!model.starts_with(prefix) || model.size() == prefix.size())
        throw Refused{setup[0].path() + " does not name a model"};
    message.model = model.substr(prefix.size());
    const auto generation = setup[1].members({"responseModalities", "speechConfig"});
    generation[0].only().isText("AUDIO");
    message.voice =
        generation[1].member("voiceConfig").member("prebuiltVoiceConfig").member("voiceName").nonEmpty();
    message.systemInstruction = setup[2].member("parts").only().member("text").nonEmpty();
    checkActivityDetection(setup[3]);
    static_cast<void>(setup[4].members({}));
    static_cast<void>(setup[5].members({}));
    checkTools(setup[6]);
    return message;
}

AudioMessage parseAudio(const Node& node) {
    const auto audio = node.member("audio").members({"mimeType", "data"});
    audio[0].isText("audio/pcm;rate=16000");
    auto samples = PcmText::decode(audio[1].text());
    if (!samples)
        throw Refused{audio[1].path() + " is not padded base64 of whole samples"};
    return {std::move(*samples)};
}

TextMessage parseText(const Node& node) {
    const auto content = node.members({"turns", "turnComplete"});
    content[1].is(true);
    const auto turn = content[0].only().members({"role", "parts"});
    turn[0].isText("user");
    return {turn[1].only().member("text").nonEmpty()};
}

ToolResponseMessage parseToolResponse(const Node& node) {
    const auto answer = node.member("functionResponses").only().members({"id", "name", "response"});
    if (!answer[2].value().is_object() && !answer[2].value().is_array())
        throw Refused{answer[2].path() + " is neither an object nor a list"};
    return {answer[0].text(), answer[1].text(), answer[2].value()};
}

ClientMessage parse(const json::value& value) {
    const Node root(value, "message");
    if (!value.is_object() || value.get_object().size() != 1)
        throw Refused{"a message is an object with one key"};
    const auto key = std::string_view(value.get_object().begin()->key());
    if (key == "setup")
        return parseSetup(root.member(key));
    if (key == "realtimeInput")
        return parseAudio(root.member(key));
    if (key == "clientContent")
        return parseText(root.member(key));
    if (key == "toolResponse")
        return parseToolResponse(root.member(key));
    throw Refused{"unknown message '" + std::string(key.substr(0, 40)) + "'"};
}

bool hasWhitespaceBetweenTokens(std::string_view text) {
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString && c == '\\')
            ++i;
        else if (c == '"')
            inString = !inString;
        else if (!inString && (c == ' ' || c == '\t' || c == '\r' || c == '\n'))
            return true;
    }
    return false;
}

} // namespace

boost::system::result<ClientMessage, Violation> parseClientMessage(std::string_view text) {
    json::error_code error;
    const auto value = json::parse(text, error);
    if (error)
        return Violation{Violation::invalidPayload, "not JSON: " + error.message()};
    if (hasWhitespaceBetweenTokens(text))
        return Violation{Violation::invalidPayload, "white space between tokens"};
    try {
        return parse(value);
    } catch (const Refused& refused) {
        return Violation{Violation::invalidPayload, refused.what};
    }
}

void ProtocolOrder::toolCalled(std::string id, std::string name) {
    openCall_.emplace(std::move(id), std::move(name));
}

std::optional<Violation> ProtocolOrder::accept(const ClientMessage& message) {
    const bool isSetup = std::holds_alternative<SetupMessage>(message);
    if (isSetup == setupSeen_)
        return Violation{Violation::policy,
                         isSetup ? "a second setup" : "the first message is not the setup"};
    setupSeen_ = true;
    if (std::holds_alternative<TextMessage>(message))
        return acceptText();
    if (const auto* response = std::get_if<ToolResponseMessage>(&message))
        return acceptToolResponse(*response);
    return {};
}

std::optional<Violation> ProtocolOrder::acceptText() {
    if (!setupCompleted_)
        return Violation{Violation::policy, "a text turn before the setup was complete"};
    if (std::exchange(textSeen_, true))
        return Violation{Violation::policy, "a second text turn"};
    return {};
}

std::optional<Violation> ProtocolOrder::acceptToolResponse(const ToolResponseMessage& response) {
    if (!openCall_)
        return Violation{Violation::policy, "a tool response that nobody asked for"};
    if (response.id != openCall_->first || response.name != openCall_->second)
        return Violation{Violation::policy, "a tool response for '" + response.id + "' (" + response.name +
                                                ") instead of '" + openCall_->first + "'"};
    openCall_.reset();
    toolAnswered_ = true;
    return {};
}

} // namespace velto::rehearsal
