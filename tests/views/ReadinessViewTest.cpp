#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"
#include "tests/views/ViewTest.h"

namespace velto::test {
namespace {

struct ReadinessViewTest : ViewTest {
    static std::string key() { return KeychainStore::get(SecretKey::geminiAPIKey).value_or("(none)"); }
};

TEST_F(ReadinessViewTest, AccessibilityIsAskedForOnceAndItsSettingsAreShownEachTime) {
    const auto shown = bench.computer.root() / "shown";
    bench.computer.desktop.setTrusted(false, "accessibility is switched off");
    openSettings();
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
    EXPECT_TRUE(reads("Velto can place AI calls."));
    EXPECT_FALSE(offers("Enable"));
}

TEST_F(ReadinessViewTest, MicrophoneAndDriverAreBroughtByTheirButtons) {
    bench.computer.microphone.set(MicrophoneAuthorization::notDetermined, "no sound server");
    bench.drivers.clear();
    openSettings();
    EXPECT_TRUE(press("Allow"));
    EXPECT_TRUE(reads("no sound server"));
    bench.computer.microphone.answer(MicrophoneAuthorization::authorized);
    EXPECT_FALSE(offers("Allow"));

    EXPECT_TRUE(press("Install"));
    EXPECT_TRUE(reads("Driver bundles not found in the app. Build with mac/bundle."));
    bench.app.drivers->busy.set(true);
    EXPECT_TRUE(reads("Installing audio drivers…"));
    EXPECT_FALSE(offers("Install"));
    bench.drivers = {"VeltoLoop.driver", "VeltoVoice.driver"};
    bench.app.drivers->busy.set(false);
    EXPECT_TRUE(reads("Velto can place AI calls."));
}

TEST_F(ReadinessViewTest, AKeyIsTrimmedFiledValidatedAndRemoved) {
    openSettings();
    fill("Gemini", " \t ");
    EXPECT_TRUE(press("Save"));
    EXPECT_EQ(key(), "(none)");

    fill("Gemini", "\t good one ");
    EXPECT_FALSE(
        reader->find(QAccessible::EditableText, "Gemini")->text(QAccessible::Value).contains("good"));
    EXPECT_TRUE(press("Save"));
    EXPECT_EQ(key(), "good one");
    EXPECT_EQ(text("Gemini"), "");
    EXPECT_TRUE(reads("valid"));
    EXPECT_TRUE(press("Remove"));
    EXPECT_EQ(key(), "(none)");
    EXPECT_FALSE(reads("valid"));
    bench.app.agent->validating.set(true);
    EXPECT_TRUE(reads("Validating keys…"));
}

TEST_F(ReadinessViewTest, AKeyringThatRefusesIsToldAndAWindowMayCloseMeanwhile) {
    openSettings();
    bench.computer.secrets.fault = SecretStatus::unavailable;
    fill("Gemini", "good one");
    EXPECT_TRUE(press("Save"));
    EXPECT_TRUE(reads("The key could not be stored."));

    bench.computer.secrets.fault.reset();
    bench.model->geminiKey()->save("good two");
    bench.model->agent()->refreshKey();
    window->close();
    bench.settle();
    EXPECT_EQ(key(), "good two");
    window->show();
    EXPECT_TRUE(reads("valid"));
    EXPECT_FALSE(reads("The key could not be stored."));
}

TEST_F(ReadinessViewTest, ProviderAndVoicesAreChosen) {
    bench.settings.openaiVoice.set("a voice that is no longer offered");
    openSettings();
    EXPECT_EQ(chosen("OpenAI voice"), "a voice that is no longer offered");
    for (const auto& [choice, provider] : {std::pair("OpenAI Realtime", "openai"), {"Automatic", ""}}) {
        EXPECT_TRUE(reader->pick("Use", choice));
        EXPECT_EQ(bench.settings.provider(), provider);
    }
    EXPECT_TRUE(reader->pick("OpenAI voice", "alloy"));
    EXPECT_EQ(bench.settings.openaiVoice(), "alloy");
    EXPECT_EQ(bench.settings.geminiVoice(), "Puck");
}

} // namespace
} // namespace velto::test
