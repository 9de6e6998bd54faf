#include "VeltoShared/core/Published.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velto::test {
namespace {

struct Counter : ObservableObject {
    Published<int> value{*this, 1};
    Published<std::vector<int>> list{*this};
};

TEST(Published, observersAreToldBeforeEachChange) {
    const Subscription late = Counter().observe([] {}); // may outlive its object
    Counter counter;
    std::vector<std::string> told;
    auto object = counter.observe([&] { told.push_back("object sees " + std::to_string(counter.value())); });
    auto value = counter.value.observe([&](int next) {
        told.push_back("value sees " + std::to_string(counter.value()) + " before " + std::to_string(next));
    });
    counter.value.set(2);
    counter.list.mutate([](auto& list) { list.push_back(7); });
    EXPECT_EQ(told, (std::vector<std::string>{"object sees 1", "value sees 1 before 2", "object sees 2"}));
    EXPECT_EQ(counter.list(), std::vector{7});

    value.reset();
    object = {};
    counter.value.set(3);
    EXPECT_EQ(told.size(), 3u);
    EXPECT_EQ(counter.value(), 3);
}

TEST(Published, observersMayComeAndGoWhileBeingTold) {
    Counter counter;
    int second = 0;
    Subscription late;
    Subscription other = counter.value.observe([&](int) { ++second; });
    auto first = counter.value.observe([&](int) {
        other.reset();
        late = counter.value.observe([&](int) { ++second; });
    });
    counter.value.set(2);
    EXPECT_EQ(second, 1); // `other` stood before `first`; `late` came too late for this change
    first.reset();
    counter.value.set(3);
    EXPECT_EQ(second, 2);
}

} // namespace
} // namespace velto::test
