#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"
#include "tests/views/SettingsWindow.h"

namespace velto::test {
namespace {

struct ReadinessViewTest : SettingsWindow {
    static std::string key(std::string_view account) {
        return KeychainStore::get(account).value_or("(none)");
    }
};

TEST_F(ReadinessViewTest, AccessibilityIsAskedForOnceAndItsSettingsAreShownEachTime) {
    const auto shown = bench.computer.root() / "shown";
    bench.computer.desktop.setTrusted(false, "accessibility is switched off");
    open();
    EXPECT_TRUE(reads("Not ready yet"));
    EXPECT_TRUE(reads("Fix the items below to get going."));
    EXPECT_FALSE(reads("accessibility is switched off"));
    EXPECT_TRUE(press("Enable"));
    EXPECT_TRUE(reads("accessibility is switched off")) << "nothing can be shown";

    bench.computer.desktop.settingsPage = {"/bin/sh", {"-c", "echo page >> '" + shown.string() + "'"}};
    EXPECT_TRUE(press("Enable"));
    EXPECT_TRUE(press("Enable"));
    EXPECT_EQ(readFile(shown), "page\npage\n");
    EXPECT_EQ(bench.computer.desktop.promptCount(), 1);
    EXPECT_FALSE(reads("accessibility is switched off"));

    bench.computer.desktop.setTrusted(true);
    EXPECT_TRUE(press("Re-check"));
    EXPECT_TRUE(reads("Ready"));
    EXPECT_TRUE(reads("Velto can place AI calls."));
    EXPECT_FALSE(offers("Enable"));
}

TEST_F(ReadinessViewTest, MicrophoneAndDriverAreBroughtByTheirButtons) {
    bench.computer.microphone.set(MicrophoneAuthorization::notDetermined, "no sound server");
    bench.drivers.clear();
    open();
    EXPECT_FALSE(reads("no sound server"));
    EXPECT_TRUE(press("Allow"));
    EXPECT_TRUE(reads("no sound server"));
    bench.computer.microphone.answer(MicrophoneAuthorization::authorized);
    bench.settle();
    EXPECT_FALSE(offers("Allow"));
    EXPECT_FALSE(reads("no sound server"));

    EXPECT_TRUE(press("Install"));
    EXPECT_TRUE(reads("Driver bundles not found in the app. Build with mac/bundle."));
    bench.app.drivers->busy.set(true);
    bench.settle();
    EXPECT_TRUE(reads("Installing audio drivers…"));
    EXPECT_FALSE(offers("Install"));
    bench.drivers = {"VeltoLoop.driver", "VeltoVoice.driver"};
    bench.app.drivers->busy.set(false);
    bench.settle();
    EXPECT_TRUE(reads("Ready"));
    EXPECT_FALSE(reads("Driver bundles not found in the app. Build with mac/bundle."));
}

TEST_F(ReadinessViewTest, AKeyIsTrimmedFiledValidatedAndRemoved) {
    open();
    fill("Gemini", " \t ");
    EXPECT_TRUE(press("Save"));
    EXPECT_TRUE(bench.computer.secrets.items().empty());

    fill("Gemini", "\t good one ");
    EXPECT_FALSE(
        reader->find(QAccessible::EditableText, "Gemini")->text(QAccessible::Value).contains("good"));
    EXPECT_TRUE(press("Save"));
    EXPECT_EQ(key(SecretKey::geminiAPIKey), "good one");
    EXPECT_EQ(text("Gemini"), "");
    EXPECT_TRUE(reads("valid"));

    fill("OpenAI", "bad one");
    reader->key(Qt::Key_Return);
    EXPECT_EQ(key(SecretKey::openAIAPIKey), "bad one");
    EXPECT_TRUE(reads("not validated"));

    EXPECT_TRUE(press("Remove"));
    EXPECT_EQ(key(SecretKey::geminiAPIKey), "(none)");
    EXPECT_FALSE(reads("valid"));
    bench.app.agent->validating.set(true);
    bench.settle();
    EXPECT_TRUE(reads("Validating keys…"));
}

TEST_F(ReadinessViewTest, AKeyringThatRefusesIsToldAndAWindowMayCloseMeanwhile) {
    open();
    bench.computer.secrets.fault = SecretStatus::unavailable;
    fill("Gemini", "good one");
    EXPECT_TRUE(press("Save"));
    EXPECT_TRUE(reads("The key could not be stored."));
    EXPECT_EQ(text("Gemini"), "");

    bench.computer.secrets.fault.reset();
    bench.model->geminiKey()->save("good two");
    bench.model->agent()->refreshKey();
    window->close();
    bench.settle();
    EXPECT_EQ(key(SecretKey::geminiAPIKey), "good two");
    window->show();
    bench.settle();
    EXPECT_TRUE(reads("valid"));
    EXPECT_FALSE(reads("The key could not be stored."));
}

TEST_F(ReadinessViewTest, ProviderAndVoicesAreChosen) {
    bench.settings.openaiVoice.set("a voice that is no longer offered");
    open();
    EXPECT_TRUE(reader->pick("Use", "OpenAI Realtime"));
    EXPECT_EQ(bench.settings.provider(), "openai");
    EXPECT_TRUE(reader->pick("Use", "Automatic"));
    EXPECT_EQ(bench.settings.provider(), "");
    EXPECT_EQ(reader->item(QAccessible::ComboBox, "OpenAI voice")->property("displayText").toString(),
              "a voice that is no longer offered");
    EXPECT_TRUE(reader->pick("OpenAI voice", "alloy"));
    EXPECT_EQ(bench.settings.openaiVoice(), "alloy");
    EXPECT_EQ(bench.settings.geminiVoice(), "Puck");
}

} // namespace
} // namespace velto::test
