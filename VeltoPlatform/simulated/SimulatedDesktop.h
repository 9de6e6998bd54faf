// A desktop in memory: applications with trees of elements that can be read and pressed, and opened URLs.
#pragma once

#include "VeltoPlatform/Accessibility.h"
#include "VeltoPlatform/Workspace.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

class SimulatedDesktop;
class SimulatedElement;
using SimulatedElementRef = std::shared_ptr<SimulatedElement>;

/// What a new element shows; an attribute that is left out has no value.
struct ElementSpec {
    std::string role{};
    std::string title{};
    std::string description{};
    AttributeValue value{};
    std::optional<ScreenPoint> position{};
};

/// One element, to be built, changed and taken away while others read it. Any thread. An element that has
/// been removed, or whose application is gone, cannot be read or pressed any more, like everything below it.
class SimulatedElement : public Element, public std::enable_shared_from_this<SimulatedElement> {
  public:
    /// Puts a new element behind the other children.
    SimulatedElementRef add(ElementSpec spec);
    SimulatedElementRef addButton(std::string description, std::function<void()> pressed = {});
    SimulatedElementRef addText(std::string value);
    /// A chain of `levels` elements below this one; answers its lowest.
    SimulatedElementRef addChain(int levels, const std::string& role = "AXGroup");

    /// Any kind of value, fitting or not; for `children` it replaces what readers see of the children.
    void set(Attribute attribute, AttributeValue value);
    /// Called on the presser's thread after each press that succeeds, with nothing locked.
    void onPress(std::function<void()> pressed);

    void remove();
    void clear();

    /// Fault: reads of this attribute bring no value.
    void failRead(Attribute attribute, bool fails = true);
    /// Fault: presses are refused.
    void failPress(bool fails = true);
    /// Presses that succeeded, and those that were tried.
    int presses() const;
    int pressAttempts() const;

  private:
    friend class SimulatedDesktop;
    struct Shared {
        std::mutex mutex;
    };
    explicit SimulatedElement(std::shared_ptr<Shared> shared) : shared_(std::move(shared)) {}

    bool attached() const;
    AttributeValue read(Attribute attribute) const;

    std::shared_ptr<Shared> shared_;
    std::weak_ptr<SimulatedElement> parent_;
    bool root_ = false; ///< of an application that runs
    std::vector<SimulatedElementRef> children_;
    std::optional<AttributeValue> childrenSeen_;
    ElementAttributes attributes_;
    unsigned failingReads_ = 0;
    bool failingPress_ = false;
    int presses_ = 0;
    int pressAttempts_ = 0;
    std::function<void()> pressed_;
};

/// The desktop itself. Any thread. It grants access (`trusted`) until told otherwise.
class SimulatedDesktop : public Accessibility, public Workspace {
  public:
    ~SimulatedDesktop() override;

    /// Starts an application, listed last, and answers its root element. Several may share an identifier.
    SimulatedElementRef launch(std::string bundleID, pid_t pid);
    SimulatedElementRef launch(std::string bundleID) { return launch(std::move(bundleID), nextPid_++); }
    /// The root of the first running one; none when there is none.
    SimulatedElementRef find(std::string_view bundleID) const;
    void quit(std::string_view bundleID);

    void setTrusted(bool trusted, std::string whyNot = "it is not granted");
    int promptCount() const;

    std::vector<std::string> openedURLs() const;
    /// Called for each opened URL, on the opener's thread, with nothing locked; answers whether an
    /// application took it. Without a handler no application does.
    void onOpenURL(std::function<bool(const std::string& url)> handler);
    std::vector<std::filesystem::path> revealedFiles() const;

    /// Called for each element that is about to be read, with nothing locked: a place to change the desktop
    /// in the middle of somebody's walk.
    void beforeRead(std::function<void()> hook);
    /// Elements asked for, single attributes asked for, and the most elements of one call.
    long elementReads() const;
    long attributeReads() const;
    std::size_t largestBatch() const;

    bool trusted() override;
    std::string whyNotTrusted() override;
    void promptForTrust() override;
    ElementRef application(pid_t pid) override;
    std::vector<ElementAttributes> read(std::span<const Request> requests) override;
    bool press(const ElementRef& element) override;

    std::vector<RunningApplication> runningApplications() override;
    bool openURL(const std::string& url) override;
    std::optional<std::string> handlerOf(const std::string& scheme) override;
    /// Recorded; true.
    bool revealFile(const std::filesystem::path& path) override;
    std::optional<Command> accessibilitySettings() override { return settingsPage; }

    /// What its users would see of their accessibility settings.
    std::optional<Command> settingsPage;

  private:
    struct Application {
        RunningApplication running;
        SimulatedElementRef root;
    };

    std::shared_ptr<SimulatedElement::Shared> shared_ = std::make_shared<SimulatedElement::Shared>();
    std::vector<Application> applications_;
    pid_t nextPid_ = 500;
    bool trusted_ = true;
    std::string whyNotTrusted_;
    int prompts_ = 0;
    std::vector<std::string> openedURLs_;
    std::vector<std::filesystem::path> revealedFiles_;
    std::function<bool(const std::string&)> urlHandler_;
    std::function<void()> beforeRead_;
    long elementReads_ = 0;
    long attributeReads_ = 0;
    std::size_t largestBatch_ = 0;
};

} // namespace velto
