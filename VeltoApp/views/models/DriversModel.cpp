#include "VeltoApp/views/models/DriversModel.h"

namespace velto {

DriversModel::DriversModel(std::shared_ptr<DriverState> drivers, QObject* parent)
    : QObject(parent), drivers_(std::move(drivers)), log_(drivers_->log, [this] { logChanged(); }),
      busy_(drivers_->busy, [this] {
          refresh();
          busyChanged();
      }) {
    refresh();
}

void DriversModel::refresh() {
    const auto names = shown(DriverState::installed());
    const auto source = DriverState::sourceDir();
    installed_ = names.isEmpty() ? QStringLiteral("(none)") : names.join(QStringLiteral(", "));
    source_ = source ? shown(source->string()) : QStringLiteral("(not found)");
    placesChanged();
}

void DriversModel::install() {
    drivers_->install();
}

void DriversModel::uninstall() {
    drivers_->uninstall();
}

void DriversModel::restartCoreAudio() {
    if (!busy())
        drivers_->restartCoreAudio();
}

} // namespace velto
