// How long a thread may still wait for programs that do not answer.
#pragma once

#include <chrono>

/// Several programs of a desktop can hang at once, and one look at the screen asks several of them. A thread
/// waits 0.3 s for the first that is silent and ever less for the next ones, so that what hangs takes less
/// than 0.5 s of it in all; a second after the last vain wait it has its full patience again.
namespace velto::BusPatience {

using Duration = std::chrono::microseconds;

/// For the calling thread's next wait; never nothing.
Duration left();
/// The calling thread has waited in vain.
void spend(Duration waited);

} // namespace velto::BusPatience
