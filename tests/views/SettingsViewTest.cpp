#include "tests/views/WindowTest.h"

namespace velto::test {
namespace {

struct SettingsViewTest : WindowTest {};

TEST_F(SettingsViewTest, Pictures) {
    for (const bool dark : {false, true}) {
        for (const char* tab : {"readiness", "general", "debug"}) {
            model->setSettingsTab(tab);
            open("SettingsView.qml");
            picture(std::string(tab) + (dark ? "-dark" : ""));
            close();
        }
    }
}

} // namespace
} // namespace velto::test
