// Which line the environment names.
#include "VeltoPhone/line/ConfiguredLine.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace velto::phone {
namespace {

TEST(ConfiguredLine, SaysWhyThereIsNone) {
    const auto whyNot = [](const char* value) {
        ::setenv("VELTO_PHONE_LINE", value, 1); // NOLINT(concurrency-mt-unsafe)
        const auto line = configuredLine();
        return line ? "there is one" : line.error().description;
    };
    EXPECT_EQ(whyNot(""), "VELTO_PHONE_LINE names none");
    EXPECT_EQ(whyNot("modem:0"), "VELTO_PHONE_LINE: unknown kind of line \"modem:0\"");
    EXPECT_NE(whyNot("rehearsal:/no/such.json").find("/no/such.json"), std::string::npos);
}

} // namespace
} // namespace velto::phone
