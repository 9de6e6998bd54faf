// Makes the troubles that a scenario asks for, each when its time has come.
#pragma once

#include "rehearsal/director/Evidence.h"
#include "rehearsal/director/PrivateSession.h"
#include "rehearsal/director/Stage.h"
#include "rehearsal/director/TranscriptPrinter.h"

#include <functional>
#include <set>

namespace velto::rehearsal {

/// One thread. Writes into the evidence which troubles were made.
class Troublemaker {
  public:
    /// `askStatus` has the application's main thread answer something, and waits for it.
    Troublemaker(const Scenario& scenario, Evidence& evidence, Stage& stage, TranscriptPrinter& printer,
                 std::function<void()> askStatus)
        : scenario_(scenario), evidence_(evidence), stage_(stage), printer_(printer),
          askStatus_(std::move(askStatus)) {}

    void makeWhenDue(PrivateSession& session);

  private:
    bool make(Trouble trouble, PrivateSession& session);
    bool stopPhone();

    const Scenario& scenario_;
    Evidence& evidence_;
    Stage& stage_;
    TranscriptPrinter& printer_;
    std::function<void()> askStatus_;
    std::set<int> tried_; ///< marks of the lines whose trouble has been made, or could not be
};

} // namespace velto::rehearsal
