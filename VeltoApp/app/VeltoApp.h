// The application object: what its windows and its control socket share.
#pragma once

#include "VeltoApp/drivers/DriverState.h"
#include "VeltoApp/history/CallHistoryStore.h"
#include "VeltoApp/session/NativeCallSession.h"
#include "VeltoApp/state/AgentState.h"
#include "VeltoApp/state/AudioState.h"
#include "VeltoApp/state/ReadinessState.h"
#include "VeltoApp/state/RecordingState.h"
#include "VeltoShared/core/AppSettings.h"

#include <memory>

namespace velto {

/// One for the life of the process, made on the main thread when platform and executors are installed. Each
/// window is given the objects that it shows.
struct VeltoApp {
    std::shared_ptr<AudioState> audio = std::make_shared<AudioState>();
    std::shared_ptr<DriverState> drivers = std::make_shared<DriverState>();
    std::shared_ptr<AgentState> agent = AgentState::shared();
    std::shared_ptr<RecordingState> rec = std::make_shared<RecordingState>();
    std::shared_ptr<NativeCallSession> nativeSession = NativeCallSession::shared();
    std::shared_ptr<ReadinessState> setup = ReadinessState::shared();
    CallHistoryStore& history = CallHistoryStore::shared();
    AppSettings& settings = AppSettings::shared();
};

} // namespace velto
