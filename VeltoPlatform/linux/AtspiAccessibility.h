// The desktop's accessibility bus (AT-SPI) as the platform's accessibility interface.
#pragma once

#include "VeltoPlatform/Accessibility.h"
#include "VeltoPlatform/linux/AtspiApplications.h"
#include "VeltoPlatform/linux/AtspiLauncher.h"
#include "VeltoPlatform/linux/AtspiMemory.h"
#include "VeltoPlatform/linux/AtspiPress.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace velto {

/// Threads do not wait for each other. Whatever hangs (a program, the registry, the launcher, a bus) is
/// waited for 0.3 s once; from then on reads answer what was last shown, presses false and `trusted` what it
/// last was, all at once, until what hung answers again. A program that ends is gone at once. Connects again
/// after a bus was restarted; elements of before then have no values.
class AtspiAccessibility : public Accessibility {
  public:
    /// `report` gets a finished line when something stops or goes on answering, when accessibility was
    /// switched on, and when a press was not answered; on the calling thread.
    explicit AtspiAccessibility(const std::function<void(const std::string&)>& report,
                                std::string sessionAddress = Bus::sessionAddress());

    /// The accessibility bus can be reached, and accessibility is switched on.
    bool trusted() override;
    std::string whyNotTrusted() override;
    /// Switches it on. Programs that look only when they start must be restarted; the report says so.
    void promptForTrust() override;
    ElementRef application(pid_t pid) override;
    std::vector<ElementAttributes> read(std::span<const Request> requests) override;
    bool press(const ElementRef& element) override;

    /// The processes that take part, in the registry's order; none when there is no accessibility bus.
    std::optional<std::vector<pid_t>> processes();

  private:
    /// All that one life of the accessibility bus comes with.
    struct Desktop {
        std::string address;
        std::shared_ptr<BusPool> pool;
        AtspiMemory memory;
        AtspiApplications applications;
        AtspiPress presses;
    };
    using DesktopRef = std::shared_ptr<Desktop>;

    /// With a lease, or of a desktop that is silent; or nothing.
    std::pair<DesktopRef, BusPool::Lease> reach();
    DesktopRef connected();
    DesktopRef use(const std::string& busAddress);
    /// What `trusted` answers, who found this out; empty: it is.
    bool found(std::string whyNot);
    /// What it answers while it cannot be found out: what it last was.
    bool stayed(std::string whyNot);

    const std::shared_ptr<BusPatience> patience_ = std::make_shared<BusPatience>();
    const BusPool::Report report_;
    AtspiLauncher launcher_;
    std::mutex mutex_;                                ///< of what follows
    std::string whyNotTrusted_ = "nobody has looked"; ///< empty: it is trusted
    DesktopRef desktop_;
};

} // namespace velto
