// The control server on its real socket, with a main thread and a background thread of their own.
#pragma once

#include "VeltoApp/control/ControlServer.h"
#include "VeltoApp/history/CallHistoryStore.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Executors.h"
#include "tests/control/ControlFakes.h"
#include "tests/support/TestComputer.h"

#include <boost/asio/thread_pool.hpp>

#include <gtest/gtest.h>

#include <future>

namespace velto::test {

class ServerFixture : public ::testing::Test {
  protected:
    ServerFixture() {
        MainThread::install(main_.get_executor());
        background = std::make_unique<BackgroundThreads>();
        onMain([this] {
            history = std::make_unique<CallHistoryStore>(AppPaths::historyFile());
            server = std::make_shared<ControlServer>(*history);
            server->start(session, agent, setup);
        });
    }
    ~ServerFixture() override {
        onMain([this] { server.reset(); });
        // A request on its way between the threads ends there before one of them does.
        for (int round = 0; round < 3; ++round) {
            std::promise<void> done;
            Background::post([&] { done.set_value(); });
            done.get_future().get();
            onMain([] {});
        }
        background.reset();
        main_.join();
        MainThread::install({});
    }

    /// Runs `work` on the main thread and waits for it.
    void onMain(std::function<void()> work) {
        std::packaged_task<void()> task(std::move(work));
        auto done = task.get_future();
        asio::post(main_, std::move(task));
        done.get();
    }
    std::string ask(std::string_view bytes) const { return RawClient(path()).ask(bytes); }
    static std::filesystem::path path() { return AppPaths::controlSocket(); }

    TestComputer computer;
    std::shared_ptr<FakeSession> session = std::make_shared<FakeSession>();
    std::shared_ptr<FakeAgent> agent = std::make_shared<FakeAgent>();
    std::shared_ptr<FakeReadiness> setup = std::make_shared<FakeReadiness>();
    std::unique_ptr<CallHistoryStore> history;
    std::shared_ptr<ControlServer> server;
    std::unique_ptr<BackgroundThreads> background;

  private:
    asio::thread_pool main_{1};
};

} // namespace velto::test
