// The line of a rehearsal: at its other end is a person who follows a scenario, inside this very process.
#pragma once

#include "VeltoPhone/line/Line.h"
#include "rehearsal/process/Reports.h"
#include "rehearsal/scenario/Scenario.h"

#include <memory>

namespace velto::phone {

/// The person hears the default input and speaks into the default output, on a thread of the line's own. What
/// is dialled before all of the person's lines have been spoken for the first time waits for that.
class RehearsalLine : public Line {
  public:
    /// `report` is told what the person hears and does, on the line's thread; first {"event":"ready"} with
    /// this process's "pid".
    RehearsalLine(rehearsal::Scenario scenario, rehearsal::Report report);
    ~RehearsalLine() override;

    void dial(const std::string& number, LineEvents events) override;
    void hangUp() override;
    void sendTones(const std::string& digits) override;

  private:
    struct Person;
    std::unique_ptr<Person> person_;
};

} // namespace velto::phone
