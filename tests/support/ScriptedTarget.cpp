// A program that takes part in the accessibility bus with whatever elements a test describes.
//
// Standard input is the description; "org.velto.Target.Show" on "/" replaces it. It writes "ready NAME" with
// its name on the bus, and "pressed ID" for every press that it carried out.
//
// An element: "id" (its path's last part), "role", "name", "description", "text", "value", "at" [x, y],
// "actions", "children" (elements, the ids of others, or "NAME ID" for another program's); "disabled",
// "hidden", "multiLine"; "copies" (so many of it); "onPress": "stop" (stops this process, carries it out when
// continued), "later" (answers it at the next "Show") or "refuse"; "broken": "error" or "types" for all that
// it answers but its role; "unanswered": a member that it never answers. Of the first element: "endsAfter",
// so many answers of the program after which nothing else is there; "stopsAfter", so many after which this
// process stops itself, once; "slow", so many milliseconds for each answer.
#include "VeltoPlatform/linux/AtspiCalls.h"
#include "VeltoPlatform/linux/AtspiRoles.h"

#include <boost/json.hpp>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <map>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;

const std::string kFolder = "/org/a11y/atspi/accessible/";

class Target {
  public:
    explicit Target(std::unique_ptr<Bus> bus) : bus_(std::move(bus)) {}

    void show(std::string_view description) {
        elements_.clear();
        unnamed_ = 0;
        answers_ = 0;
        add(json::parse(description).as_object(), "root");
    }

    void serve() {
        sd_bus_add_filter(
            bus_->handle(), nullptr,
            [](sd_bus_message* message, void* target, sd_bus_error*) {
                return static_cast<Target*>(target)->answer(message);
            },
            this);
        const char* name = nullptr;
        sd_bus_get_unique_name(bus_->handle(), &name);
        const auto embed =
            bus_->method(AtspiCalls::kRegistry, AtspiCalls::kRoot, "org.a11y.atspi.Socket", "Embed");
        sd_bus_message_append(embed.get(), "(so)", name, AtspiCalls::kRoot);
        bus_->send(embed, 10s, [&](const BusReply& reply) {
            std::printf(reply ? "ready %s\n" : "not embedded %s\n", name);
            std::fflush(stdout);
        });
        while (bus_->alive())
            bus_->process(3600s);
    }

  private:
    std::string add(const json::object& facts, std::string id) {
        if (id.empty())
            id = facts.contains("id") ? text(facts, "id") : "n" + std::to_string(unnamed_++);
        json::array children;
        if (const auto* described = facts.if_contains("children")) {
            for (const auto& child : described->as_array())
                if (child.is_string())
                    children.push_back(child);
                else
                    for (auto copy = count(child.as_object(), "copies"); copy > 0; --copy)
                        children.emplace_back(add(child.as_object(), ""));
        }
        auto& element = elements_[id] = facts;
        element["children"] = std::move(children);
        return id;
    }

    static std::int64_t count(const json::object& facts, const char* key) {
        const auto* value = facts.if_contains(key);
        return value ? value->as_int64() : 1;
    }

    static std::string text(const json::object& facts, const char* key) {
        const auto* value = facts.if_contains(key);
        return value ? json::value_to<std::string>(*value) : "";
    }

    int answer(sd_bus_message* call) {
        if (sd_bus_message_is_method_call(call, "org.velto.Target", "Show") > 0) {
            const char* description = nullptr;
            sd_bus_message_read(call, "s", &description);
            show(description);
            for (const auto& press : std::exchange(later_, {}))
                sd_bus_reply_method_return(press.get(), "b", 1);
            return sd_bus_reply_method_return(call, "");
        }
        const char* path = sd_bus_message_get_path(call);
        if (!path || !std::string_view(path).starts_with(kFolder) ||
            sd_bus_message_is_method_call(call, nullptr, nullptr) <= 0)
            return 0;
        const auto id = std::string(path).substr(kFolder.size());
        const auto found = elements_.find(id);
        const auto& root = elements_["root"];
        if (root.contains("slow"))
            std::this_thread::sleep_for(std::chrono::milliseconds(count(root, "slow")));
        ++answers_;
        const bool ended = root.contains("endsAfter") && answers_ > count(root, "endsAfter");
        if (root.contains("stopsAfter") && answers_ == count(root, "stopsAfter") + 1)
            std::raise(SIGSTOP);
        if (found == elements_.end() || (ended && id != "root"))
            return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "gone");
        const std::string_view member = sd_bus_message_get_member(call);
        if (text(found->second, "unanswered") == member)
            return 1;
        const auto broken = text(found->second, "broken");
        if (!broken.empty() && member != "GetRole")
            return broken == "error" ? sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "broken")
                                     : sd_bus_reply_method_return(call, "t", std::uint64_t{7});
        return answerFor(id, found->second, member, call);
    }

    int answerFor(const std::string& id, const json::object& facts, std::string_view member,
                  sd_bus_message* call) {
        if (member == "GetRole")
            return sd_bus_reply_method_return(call, "u", static_cast<std::uint32_t>(count(facts, "role")));
        if (member == "GetState")
            return sd_bus_reply_method_return(call, "au", 2, state(facts), 0);
        if (member == "GetChildren")
            return reply(call, [&](sd_bus_message* out) {
                const char* name = nullptr;
                sd_bus_get_unique_name(bus_->handle(), &name);
                sd_bus_message_open_container(out, 'a', "(so)");
                for (const auto& each : facts.at("children").as_array()) {
                    const std::string child(each.as_string());
                    const auto of = child.find(' ');
                    sd_bus_message_append(out, "(so)", of == child.npos ? name : child.substr(0, of).c_str(),
                                          (kFolder + child.substr(of + 1)).c_str());
                }
                sd_bus_message_append(out, "(so)", "", "/org/a11y/atspi/null");
                sd_bus_message_close_container(out);
            });
        if (member == "Get")
            return answerProperty(facts, call);
        if (member == "GetText" && facts.contains("text"))
            return sd_bus_reply_method_return(call, "s", text(facts, "text").c_str());
        if (member == "GetExtents" && facts.contains("at"))
            return sd_bus_reply_method_return(call, "(iiii)",
                                              static_cast<int>(facts.at("at").at(0).as_int64()),
                                              static_cast<int>(facts.at("at").at(1).as_int64()), 10, 10);
        if (member == "GetActions" && facts.contains("actions"))
            return reply(call, [&](sd_bus_message* out) {
                sd_bus_message_open_container(out, 'a', "(sss)");
                for (const auto& action : facts.at("actions").as_array())
                    sd_bus_message_append(out, "(sss)", action.as_string().c_str(), "", "");
                sd_bus_message_close_container(out);
            });
        if (member == "DoAction" && facts.contains("actions"))
            return press(id, facts, call);
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "no such interface");
    }

    static int answerProperty(const json::object& facts, sd_bus_message* call) {
        const char* interface = nullptr;
        const char* name = nullptr;
        sd_bus_message_read(call, "ss", &interface, &name);
        const std::string_view property = name;
        if (property == "Name" || property == "Description")
            return sd_bus_reply_method_return(
                call, "v", "s", text(facts, property == "Name" ? "name" : "description").c_str());
        if (property == "CurrentValue" && facts.contains("value"))
            return sd_bus_reply_method_return(call, "v", "d", facts.at("value").to_number<double>());
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_PROPERTY, "no such property");
    }

    int press(const std::string& id, const json::object& facts, sd_bus_message* call) {
        std::int32_t action = 0;
        sd_bus_message_read(call, "i", &action);
        const auto how = text(facts, "onPress");
        if (how == "stop")
            std::raise(SIGSTOP);
        if (how == "refuse")
            return sd_bus_reply_method_return(call, "b", 0);
        std::printf("pressed %s by %s\n", id.c_str(),
                    facts.at("actions").at(static_cast<std::size_t>(action)).as_string().c_str());
        std::fflush(stdout);
        if (how != "later")
            return sd_bus_reply_method_return(call, "b", 1);
        later_.emplace_back(sd_bus_message_ref(call));
        return 1;
    }

    static std::uint32_t state(const json::object& facts) {
        constexpr auto kFocusable = 1u << 11u;
        auto bits =
            facts.contains("disabled") ? kFocusable : 1u << AtspiState::enabled | 1u << AtspiState::sensitive;
        if (!facts.contains("hidden"))
            bits |= 1u << AtspiState::visible;
        if (facts.contains("multiLine"))
            bits |= 1u << AtspiState::multiLine;
        return bits;
    }

    template <class Fill>
    static int reply(sd_bus_message* call, Fill fill) {
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_method_return(call, &raw);
        const BusMessage out(raw);
        fill(raw);
        const int sent = sd_bus_send(nullptr, raw, nullptr);
        return sent < 0 ? sent : 1;
    }

    std::unique_ptr<Bus> bus_;
    std::vector<BusMessage> later_;                ///< presses that want an answer
    std::map<std::string, json::object> elements_; ///< by id; their children are ids
    int unnamed_ = 0;
    std::int64_t answers_ = 0;
};

std::unique_ptr<Bus> openAccessibilityBus() {
    const auto session = Bus::open(Bus::sessionAddress(), 10s);
    if (!session)
        return nullptr;
    const auto address = AtspiCalls::text(
        session->call(session->method("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"), 10s));
    return address ? Bus::open(*address, 10s) : nullptr;
}

} // namespace
} // namespace velto::test

int main() {
    auto bus = velto::test::openAccessibilityBus();
    if (!bus)
        return 2;
    velto::test::Target target(std::move(bus));
    target.show(std::string(std::istreambuf_iterator<char>(std::cin), {}));
    target.serve();
}
