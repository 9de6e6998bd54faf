#include "veltoctl/Doctor.h"

#include "VeltoShared/core/Utf8.h"
#include "veltoctl/Checks.h"

#include <boost/json/serialize.hpp>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace velto::ctl {
namespace {

using Is = Finding::Is;

constexpr std::chrono::seconds kLimit{4};
/// A provider may take 20 s to say what it thinks of a key, and there are two.
constexpr std::chrono::seconds kOnlineLimit{45};

/// Shared with the checks' threads, which may outlive the look.
struct Ward {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::optional<Finding>> findings;
};

const char* word(Is is) {
    switch (is) {
    case Is::well:
        return "ok";
    case Is::advice:
        return "advice";
    case Is::missing:
        return "missing";
    case Is::unknown:
        break;
    }
    return "unknown";
}

std::string shownWord(Is is) {
    std::string text(word(is));
    text.resize(8, ' ');
    if (!Output::isColoured())
        return text;
    return (is == Is::well ? "\x1b[32m" : is == Is::missing ? "\x1b[31m" : "\x1b[33m") + text + "\x1b[0m";
}

void print(const Check& check, const Finding& finding, bool json, Output& output) {
    if (json) {
        output.line(boost::json::serialize(boost::json::object{{"check", check.id},
                                                               {"result", word(finding.is)},
                                                               {"what", repairedUtf8(finding.what)},
                                                               {"remedy", repairedUtf8(finding.remedy)}}));
        return;
    }
    std::string title(check.title);
    title.resize(18, ' ');
    output.line(shownWord(finding.is) + title + printable(finding.what) +
                (finding.remedy.empty() ? "" : " → " + printable(finding.remedy)));
}

/// A check that cannot be made does not take the others with it.
Finding lookedAt(const std::function<Finding()>& look) {
    try {
        return look();
    } catch (const std::exception& error) {
        return {Is::unknown, error.what(), "see whether memory and disk have room"};
    }
}

} // namespace

int doctor(const Arguments& arguments, Output& output) {
    const auto all = checks(arguments.online);
    const auto ward = std::make_shared<Ward>();
    ward->findings.resize(all.size());
    for (std::size_t i = 0; i < all.size(); ++i)
        std::thread([ward, i, look = all[i].look] {
            auto finding = lookedAt(look);
            const std::lock_guard lock(ward->mutex);
            ward->findings[i] = std::move(finding);
            ward->changed.notify_all();
        }).detach();
    const auto until = std::chrono::steady_clock::now() + (arguments.online ? kOnlineLimit : kLimit);
    bool isMissing = false;
    bool isUnknown = false;
    for (std::size_t i = 0; i < all.size(); ++i) {
        std::unique_lock lock(ward->mutex);
        ward->changed.wait_until(lock, until, [&] { return ward->findings[i].has_value(); });
        const auto finding =
            ward->findings[i].value_or(Finding{Is::unknown, "no answer in time", "look whether it hangs"});
        lock.unlock();
        isMissing = isMissing || finding.is == Is::missing;
        isUnknown = isUnknown || finding.is == Is::unknown;
        print(all[i], finding, arguments.json, output);
    }
    return isMissing ? kRefused : isUnknown ? kFailed : kDone;
}

} // namespace velto::ctl
