// What each command answers. Without the object that would know, an answer is false, empty or 0.
#include "VeltoApp/control/ControlCommands.h"

#include "VeltoShared/core/ISO8601.h"
#include "VeltoShared/core/Utf8.h"

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>

namespace velto::ControlCommands {
namespace {

namespace json = boost::json;

json::string_view view(std::string_view text) {
    return {text.data(), text.size()};
}

/// Texts of the application, fit for the wire.
json::string wireText(std::string_view text) {
    if (isValidUtf8(text))
        return json::string(view(text));
    return json::string(view(repairedUtf8(text)));
}

std::optional<std::string> text(const json::object& request, std::string_view key) {
    const auto* value = request.if_contains(view(key));
    if (!value || !value->is_string())
        return std::nullopt;
    return std::string(value->get_string());
}

/// Nothing tells the application that accessibility was switched on or a driver installed: who asks makes it
/// look.
void look(const ControlTargets& targets) {
    if (targets.setup)
        targets.setup->refresh();
}

bool ready(const ControlTargets& targets) {
    return targets.setup && targets.agent && targets.setup->ready() && targets.agent->anyKeyValid();
}

json::object status(const ControlTargets& targets) {
    look(targets);
    const auto& session = targets.session;
    const auto provider = targets.agent ? targets.agent->activeProvider() : std::nullopt;
    return {{"ok", true},
            {"running", session && session->running()},
            {"state", view(session ? session->state() : "idle")},
            {"number", wireText(session ? session->number() : "")},
            {"session", session ? session->sessionNumber() : 0},
            {"provider", view(provider ? rawValue(*provider) : "")},
            {"ready", ready(targets)}};
}

json::object readiness(const ControlTargets& targets) {
    look(targets);
    const auto& setup = targets.setup;
    const auto& agent = targets.agent;
    return {{"ok", true},
            {"accessibility", setup && setup->axReady()},
            {"microphone", setup && setup->micReady()},
            {"driver", setup && setup->driverReady()},
            {"apiKeyValid", agent && agent->anyKeyValid()},
            {"gemini", agent && agent->geminiValid()},
            {"openai", agent && agent->openaiValid()},
            {"ready", ready(targets)}};
}

json::object start(const json::object& request, const ControlTargets& targets, bool dial) {
    const auto& session = targets.session;
    if (!session)
        return failure("not ready");
    if (session->running())
        return failure("busy");
    if (auto number = text(request, "number"); number && !number->empty())
        session->setNumber(std::move(*number));
    auto goal = text(request, "goal");
    if (!goal && targets.agent)
        goal = targets.agent->goal();
    session->start(goal.value_or(""), dial);
    return {{"ok", true}, {"state", view(session->state())}};
}

json::object hangup(const ControlTargets& targets) {
    if (targets.session)
        targets.session->stop();
    return {{"ok", true}};
}

json::object transcript(const ControlTargets& targets) {
    json::array lines;
    if (targets.session)
        for (const auto& line : targets.session->liveTranscript())
            lines.push_back(wireText(line));
    return {{"ok", true}, {"lines", std::move(lines)}};
}

json::object history(const std::vector<CallRecord>& calls) {
    json::array list;
    list.reserve(calls.size());
    for (const auto& call : calls)
        list.push_back({{"id", call.id.text()},
                        {"number", wireText(call.number)},
                        {"started", iso8601(call.started.timePoint())},
                        {"duration", call.duration},
                        {"transcript", wireText(call.transcript)}});
    return {{"ok", true}, {"calls", std::move(list)}};
}

json::object providers(const ControlTargets& targets) {
    json::object voiceNames;
    for (const auto provider : kAllVoiceProviders) {
        json::array names;
        for (const auto name : voices(provider))
            names.push_back(view(name));
        voiceNames.emplace(view(rawValue(provider)), std::move(names));
    }
    return {{"ok", true},
            {"voices", std::move(voiceNames)},
            {"gemini", targets.agent && targets.agent->hasGeminiKey()},
            {"openai", targets.agent && targets.agent->hasOpenAIKey()}};
}

} // namespace

json::object failure(std::string_view error) {
    return {{"ok", false}, {"error", view(error)}};
}

json::object handle(const json::object& request, const ControlTargets& targets,
                    const std::vector<CallRecord>& calls) {
    const auto cmd = text(request, "cmd").value_or("");
    if (cmd == "ping")
        return {{"ok", true}};
    if (cmd == "status")
        return status(targets);
    if (cmd == "readiness")
        return readiness(targets);
    if (cmd == "call" || cmd == "watch")
        return start(request, targets, cmd == "call");
    if (cmd == "hangup")
        return hangup(targets);
    if (cmd == "transcript")
        return transcript(targets);
    if (cmd == "history")
        return history(calls);
    if (cmd == "providers")
        return providers(targets);
    return failure("unknown cmd '" + cmd + "'");
}

} // namespace velto::ControlCommands
