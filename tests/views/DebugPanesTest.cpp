
#include "tests/views/WindowTest.h"

namespace velto::test {
namespace {

struct DebugPanesTest : WindowTest {};

TEST_F(DebugPanesTest, Pictures) {
    model->setSettingsTab("debug");
    for (int i = 0; i < 12; ++i) {
        CallRecord record;
        record.number = i % 4 == 3 ? "" : "+1555123456" + std::to_string(i);
        record.duration = 37.4 * i;
        record.started = CallRecord::Time::of(clock.now() - i * 5h);
        if (i % 2)
            record.recordingPath = "/somewhere/else.wav";
        record.transcript = "Agent: Good evening, this is an assistant calling for Ada.\nCaller: Hello! What can I do for you?";
        history.insertFirst(record);
    }
    open("SettingsView.qml");
    for (const char* pane : {"Native", "Recordings", "History", "Diagnostics", "Routing", "Drivers"}) {
        pick("Pane", pane);
        settle();
        picture(pane);
    }
}

} // namespace
} // namespace velto::test
