#include "VeltoApp/views/models/ReadinessModel.h"

#include "VeltoShared/telephony/AX.h"

namespace velto {

ReadinessModel::ReadinessModel(std::shared_ptr<ReadinessState> readiness, QObject* parent)
    : QObject(parent), readiness_(std::move(readiness)), axReady_(readiness_->axReady,
                                                                  [this] {
                                                                      axReadyChanged();
                                                                      readyChanged();
                                                                  }),
      micReady_(readiness_->micReady,
                [this] {
                    micReadyChanged();
                    readyChanged();
                }),
      driverReady_(readiness_->driverReady, [this] {
          driverReadyChanged();
          readyChanged();
      }) {}

void ReadinessModel::refresh() {
    readiness_->refresh();
}

void ReadinessModel::requestMic() {
    readiness_->requestMic();
}

void ReadinessModel::enableAccessibility() {
    if (!readiness_->didPromptAX) {
        readiness_->didPromptAX = true;
        AX::promptForTrust();
    }
    refresh();
}

} // namespace velto
