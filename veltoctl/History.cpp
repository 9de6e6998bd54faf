#include "veltoctl/History.h"

#include "VeltoApp/control/ControlCommands.h"
#include "VeltoApp/history/CallRecordJSON.h"
#include "VeltoApp/history/HistoryFile.h"
#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/ISO8601.h"
#include "veltoctl/Report.h"

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <cctype>

namespace velto::ctl::History {
namespace {

namespace json = boost::json;

std::optional<std::vector<CallRecord>> stored() {
    const auto path = AppPaths::historyFileToReach();
    std::error_code error;
    if (!std::filesystem::exists(path, error) && !error)
        return std::vector<CallRecord>{};
    const auto content = HistoryFile::read(path);
    if (content && content->empty()) // as the application takes it
        return std::vector<CallRecord>{};
    auto records = content ? CallRecordJSON::decode(*content) : std::nullopt;
    if (!records)
        Output::message("cannot understand " + path.string());
    return records;
}

bool begins(const std::string& id, const std::string& prefix) {
    return prefix.size() <= id.size() &&
           std::equal(prefix.begin(), prefix.end(), id.begin(),
                      [](char a, char b) { return std::toupper(static_cast<unsigned char>(a)) == b; });
}

} // namespace

std::optional<json::object> calls(int last) {
    auto reply = ControlClient::request({{"cmd", "history"}});
    if (!reply) {
        const auto records = stored();
        if (!records)
            return std::nullopt;
        reply = ControlCommands::handle({{"cmd", "history"}}, {}, *records);
    }
    auto* const list = reply->if_contains("calls");
    if (last > 0 && list && list->is_array() && list->get_array().size() > static_cast<std::size_t>(last))
        list->get_array().resize(static_cast<std::size_t>(last));
    return reply;
}

int show(const Arguments& arguments, Output& output) {
    const auto records = stored();
    if (!records)
        return kFailed;
    std::vector<const CallRecord*> found;
    for (const auto& record : *records)
        if (begins(record.id.text(), arguments.id))
            found.push_back(&record);
    if (found.size() != 1) {
        Output::message(
            (found.empty() ? "no call has the ID " : "more than one call has an ID that begins with ") +
            printable(arguments.id) + "; see \"veltoctl history\"");
        return kRefused;
    }
    const auto& call = *found.front();
    json::object object{{"id", call.id.text()},
                        {"number", call.number},
                        {"started", iso8601(call.started.timePoint())},
                        {"duration", call.duration},
                        {"transcript", call.transcript},
                        {"recordingPath", nullptr}};
    if (call.recordingPath)
        object["recordingPath"] = *call.recordingPath;
    if (arguments.json)
        output.line(json::serialize(object));
    else
        for (const auto& line : Report::call(object))
            output.line(line);
    return kDone;
}

} // namespace velto::ctl::History
