// Every operation is posted to the thread on which the person lives.
#include "VeltoPhone/line/RehearsalLine.h"

#include "rehearsal/callee/Callee.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <unistd.h>

#include <optional>
#include <thread>

namespace velto::phone {
namespace {

namespace asio = boost::asio;

} // namespace

struct RehearsalLine::Person {
    rehearsal::Scenario scenario;
    rehearsal::Report report;
    asio::io_context context{1};
    std::optional<rehearsal::Callee> callee;
    std::optional<LineEvents> call;
    std::thread thread;

    Person(rehearsal::Scenario itsScenario, rehearsal::Report itsReport)
        : scenario(std::move(itsScenario)), report(std::move(itsReport)) {
        asio::post(context, [this] { live(); });
        thread = std::thread([this] { context.run(); });
    }

    ~Person() {
        asio::post(context, [this] {
            callee->hangUp("the phone was closed");
            context.stop();
        });
        thread.join();
    }

    void live() {
        report({{"event", "ready"}, {"pid", ::getpid()}});
        callee.emplace(context, scenario,
                       rehearsal::Callee::Hooks{[this] { call->ringing(); }, [this] { call->answered(); },
                                                [this](const std::string& reason) {
                                                    std::exchange(call, std::nullopt)->ended(reason);
                                                },
                                                report});
        asio::co_spawn(context, callee->run(), [](const std::exception_ptr& error) {
            if (error)
                std::rethrow_exception(error);
        });
    }

    void dial(const std::string& number, LineEvents events) {
        if (call)
            return events.ended("the line is busy");
        call = std::move(events);
        callee->dial(number);
    }
};

RehearsalLine::RehearsalLine(rehearsal::Scenario scenario, rehearsal::Report report)
    : person_(std::make_unique<Person>(std::move(scenario), std::move(report))) {}

RehearsalLine::~RehearsalLine() = default;

void RehearsalLine::dial(const std::string& number, LineEvents events) {
    asio::post(person_->context, [person = person_.get(), number, events = std::move(events)]() mutable {
        person->dial(number, std::move(events));
    });
}

void RehearsalLine::hangUp() {
    asio::post(person_->context,
               [person = person_.get()] { person->callee->hangUp(LineEvents::hungUpHere); });
}

void RehearsalLine::sendTones(const std::string& digits) {
    asio::post(person_->context, [person = person_.get(), digits] { person->callee->sendTones(digits); });
}

} // namespace velto::phone
