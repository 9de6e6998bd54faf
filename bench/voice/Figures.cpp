#include "bench/voice/Figures.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace velto::bench {

void giveUp(const std::string& why) {
    std::fprintf(stderr, "%s\n", why.c_str());
    std::abort();
}

double threadMicroseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

Figure figureOf(std::vector<double> rounds) {
    std::ranges::sort(rounds);
    return {rounds[rounds.size() / 2], rounds.front(), rounds.back()};
}

std::string microseconds(const Figure& figure) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.1f us (%.1f to %.1f)", figure.median, figure.least,
                  figure.most);
    return text.data();
}

} // namespace velto::bench
