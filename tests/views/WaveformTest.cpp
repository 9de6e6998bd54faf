#include "VeltoShared/audio/Waveform.h"

#include "VeltoShared/core/AppPaths.h"
#include "tests/views/ViewTest.h"

#include <QTest>

#include <filesystem>
#include <fstream>

namespace velto::test {
namespace {

using Peaks = std::vector<std::uint16_t>;
const std::vector<std::int16_t> kLong(16'000 * 40, 9'000);

struct WaveformTest : ViewTest {
    QQuickItem* slider() const { return reader->item(QAccessible::Slider, "Place in the recording"); }
    void click(double part) {
        const auto place = slider()->mapToScene({slider()->width() * part, slider()->height() / 2});
        QTest::mouseClick(window, Qt::LeftButton, {}, place.toPoint());
        bench.settle();
    }
    double position() const { return bench.app.rec->playing() ? bench.app.rec->playing()->position : -1; }
};

TEST_F(WaveformTest, HasTheLoudestSampleOfEachColumn) {
    std::vector<std::int16_t> sound(30'000, 1);
    sound[0] = -32'768;
    sound[9'999] = 500;
    sound[10'000] = -700;
    sound[29'999] = 900;
    const auto path = bench.addRecording("a.wav", sound);
    const auto form = Waveform::read(path, 3);
    ASSERT_TRUE(form);
    EXPECT_EQ(form->peaks, (Peaks{32'768, 700, 900}));
    EXPECT_DOUBLE_EQ(form->seconds, 30'000 / 16'000.0);
    EXPECT_EQ(Waveform::read(bench.addRecording("b.wav", {-3, 2}), 600)->peaks, (Peaks{3, 2}));

    std::filesystem::resize_file(path, 44 + 40'000); // its header tells of more, as while it is written
    EXPECT_EQ(Waveform::read(path, 2)->peaks, (Peaks{32'768, 700}));
    std::ofstream(AppPaths::recordings() / "text.wav") << std::string(100, 'x');
    bench.addRecording("empty.wav", {});
    for (const auto& name : {"empty.wav", "text.wav", "none.wav"})
        EXPECT_FALSE(Waveform::read(AppPaths::recordings() / name, 3)) << name;
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_FALSE(Waveform::read(path, 3, stopped.get_token()));
    std::filesystem::resize_file(path, 45);
    EXPECT_FALSE(Waveform::read(path, 3)) << "no sample is left";
}

TEST_F(WaveformTest, ARecordingPlaysFromWhereItIsClickedOrTheKeyboardIs) {
    const auto path = bench.addRecording("a.wav", kLong);
    openPane("Recordings");
    ASSERT_NE(slider(), nullptr);
    click(0.25);
    EXPECT_NEAR(position(), 10, 0.2);
    bench.advance(1s);
    EXPECT_NEAR(position(), 11, 0.3);
    EXPECT_NEAR(slider()->property("value").toDouble(), position(), 1e-9);
    EXPECT_TRUE(press("Stop"));
    EXPECT_EQ(position(), -1);

    const double place = slider()->property("value").toDouble();
    reader->key(Qt::Key_Right);
    EXPECT_EQ(position(), -1);
    reader->key(Qt::Key_Space);
    EXPECT_NEAR(position(), place + 2, 1e-6);
    reader->key(Qt::Key_Left);
    EXPECT_NEAR(position(), place, 0.2) << "what plays goes along";
    reader->key(Qt::Key_Return);
    EXPECT_EQ(position(), -1);

    EXPECT_TRUE(reads("1250 KB"));
    fill("Play device", "Gramophone");
    EXPECT_TRUE(press("Play"));
    EXPECT_TRUE(reads("Cannot play a.wav on Gramophone"));
    EXPECT_TRUE(press("Reveal"));
    EXPECT_EQ(bench.computer.desktop.revealedFiles().back(), path);
}

TEST_F(WaveformTest, ATranscriptSaysThatItsRecordingCannotBePlayed) {
    const auto path = bench.addRecording("a.wav", kLong);
    bench.history.insertFirst({.number = "+15550126", .recordingPath = path.string()});
    openPane("History");
    ASSERT_TRUE(press("+15550126", QAccessible::ListItem));
    std::filesystem::remove(path);
    bench.app.rec->play("b.wav", "Speaker");
    EXPECT_FALSE(reads("Cannot play b.wav on Speaker"));
    click(0.5);
    EXPECT_TRUE(reads("Cannot play a.wav on Speaker"));
}

} // namespace
} // namespace velto::test
