// A desktop without accessibility, phone app and keyring: what the headless application finds on a machine
// whose desktop it cannot drive. Everything answers that it is not there.
#pragma once

#include "VeltoPlatform/Accessibility.h"
#include "VeltoPlatform/SecretStore.h"
#include "VeltoPlatform/Workspace.h"

namespace velto {

class AbsentDesktop : public Accessibility, public Workspace, public SecretStore {
  public:
    bool trusted() override { return false; }
    void promptForTrust() override {}
    ElementRef application(pid_t) override { return std::make_shared<Element>(); }
    std::vector<ElementAttributes> read(std::span<const Request> requests) override {
        return std::vector<ElementAttributes>(requests.size());
    }
    bool press(const ElementRef&) override { return false; }

    std::vector<RunningApplication> runningApplications() override { return {}; }
    bool openURL(const std::string&) override { return false; }
    bool revealFile(const std::filesystem::path&) override { return false; }

    bool canDescribeAccess() override { return false; }
    SecretStatus add(const SecretItem&) override { return SecretStatus::unavailable; }
    SecretStatus find(const std::string&, const std::string&, std::string&) override {
        return SecretStatus::unavailable;
    }
    SecretStatus remove(const std::string&, const std::string&) override { return SecretStatus::unavailable; }
    std::string state() override { return "none"; }
};

} // namespace velto
