// Handing over to the phone that runs already.
#include "VeltoPhone/app/SingleInstance.h"
#include "tests/phone/PhoneFixture.h"

#include <QLocalSocket>
#include <QTemporaryDir>
#include <QThread>

#include <filesystem>

namespace velto::phone {
namespace {

using namespace std::chrono_literals;
using Role = SingleInstance::Role;

struct SingleInstanceTest : testing::Test {
    QTemporaryDir folder;
    const QString socket = folder.path() + "/velto-phone.sock";
    std::vector<std::string> wishes;

    void collect(SingleInstance& instance) {
        QObject::connect(&instance, &SingleInstance::wished, &instance, [this](const Wish& wish) {
            wishes.push_back(wish ? wish->toStdString() : "(window)");
        });
    }
    /// What a second launch makes of it, while the first one's loop runs.
    Role launch(const Wish& wish) {
        std::atomic<Role> role = Role::failed;
        const std::unique_ptr<QThread> other(QThread::create([&] {
            SingleInstance instance(folder.path());
            role = instance.settle(wish, 30s);
        }));
        other->start();
        while (!other->wait(1))
            QCoreApplication::processEvents();
        return role;
    }
};

TEST_F(SingleInstanceTest, LaterLaunchesHandOverTheirWishes) {
    auto first = std::make_unique<SingleInstance>(folder.path());
    collect(*first);
    ASSERT_EQ(first->settle({}), Role::first);
    ASSERT_TRUE(first->listen());
    EXPECT_EQ(std::filesystem::status(socket.toStdString()).permissions(), std::filesystem::perms{0600});

    QLocalSocket stranger;
    stranger.connectToServer(socket);
    stranger.write("rm -rf\nopen 666\n");
    EXPECT_EQ(launch("tel:*31#5\n%41é"), Role::handedOver);
    EXPECT_EQ(launch({}), Role::handedOver);
    EXPECT_EQ(launch(QString()), Role::handedOver) << "an empty number is not the window";
    EXPECT_EQ(wishes, (std::vector<std::string>{"tel:*31#5\n%41é", "(window)", ""}));

    first.reset();
    SingleInstance next(folder.path());
    EXPECT_EQ(next.settle({}), Role::first);
}

TEST_F(SingleInstanceTest, AnInstanceThatDoesNotAnswerIsNotWaitedForLong) {
    SingleInstance stuck(folder.path());
    collect(stuck);
    ASSERT_EQ(stuck.settle({}), Role::first);
    SingleInstance second(folder.path());
    EXPECT_EQ(second.settle("5", 100ms), Role::failed) << "does not listen yet";
    ASSERT_TRUE(stuck.listen());
    EXPECT_EQ(second.settle("5", 100ms), Role::failed) << "listens, and its loop stands still";
    EXPECT_EQ(second.error(), "the running phone does not answer");

    PhoneFixture::settle();
    EXPECT_EQ(wishes, std::vector<std::string>{}) << "the sender was told that it had failed";
    QLocalSocket late;
    late.connectToServer(socket);
    PhoneFixture::settle();
    stuck.close();
    late.write("open 7\n");
    EXPECT_TRUE(late.waitForBytesWritten());
    while (late.state() == QLocalSocket::ConnectedState)
        QCoreApplication::processEvents();
    EXPECT_EQ(late.readAll(), "");
    EXPECT_EQ(wishes, std::vector<std::string>{});

    SingleInstance nowhere(folder.path() + "/no/such");
    EXPECT_EQ(nowhere.settle({}, 100ms), Role::failed);
    EXPECT_TRUE(nowhere.error().contains("cannot lock"));
}

} // namespace
} // namespace velto::phone
