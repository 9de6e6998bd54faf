#include "VeltoPlatform/linux/FileSecretStore.h"

#include <openssl/evp.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace velto {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

constexpr const char* kEntries = "keys";

const unsigned char* bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string encoded(const std::string& data) {
    std::string text((data.size() + 2) / 3 * 4 + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes(data),
                                       static_cast<int>(data.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::optional<std::string> decoded(const std::string& text) {
    std::string data(text.size() / 4 * 3, '\0');
    const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(data.data()), bytes(text),
                                       static_cast<int>(text.size()));
    const auto padding =
        text.size() - std::min(text.size(), text.find_last_not_of('=') + 1); // decoded as zero bytes
    if (length < 0 || padding > 2)
        return std::nullopt;
    data.resize(static_cast<std::size_t>(length) - padding);
    return data;
}

bool holds(const json::value& entry, const char* name, const std::string& text) {
    const auto* value = entry.is_object() ? entry.get_object().if_contains(name) : nullptr;
    return value && value->is_string() && value->get_string() == text;
}

auto same(const std::string& service, const std::string& account) {
    return [&](const json::value& entry) {
        return holds(entry, "service", service) && holds(entry, "account", account);
    };
}

/// Takes away what others may do. False with `errno` when that cannot be, or it is not ours.
bool makeOurs(const fs::path& path, mode_t mode, bool& repaired) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return false;
    if (status.st_uid != ::geteuid()) {
        errno = EPERM;
        return false;
    }
    if ((status.st_mode & 0777u) == mode)
        return true;
    repaired = true;
    return ::chmod(path.c_str(), mode) == 0;
}

} // namespace

FileSecretStore::FileSecretStore(fs::path file, TroubleReport::Report report)
    : trouble_("key file", std::move(report)),
      file_(std::move(file), [this](const std::string& line) { trouble_.note(line); }) {}

/// Looks at folder and file before either is used.
FileSecretStore::Guard FileSecretStore::guard() {
    const auto folder = file_.path().parent_path();
    for (const auto& [path, mode] : {std::pair<fs::path, mode_t>{folder, 0700}, {file_.path(), 0600}}) {
        bool repaired = false;
        const bool ours = makeOurs(path, mode, repaired);
        if (!ours && (errno == ENOENT || errno == ENOTDIR))
            return Guard::absent;
        if (!ours) {
            trouble_.tell(
                path.string() + " cannot be used: " +
                (errno == EPERM ? "it belongs to somebody else" : std::generic_category().message(errno)));
            return Guard::unsafe;
        }
        if (repaired)
            trouble_.note(path.string() + " was open to other users; set right");
    }
    return Guard::safe;
}

SecretStatus FileSecretStore::answer(SecretStatus status, const std::string& problem) {
    trouble_.tell(problem);
    return problem.empty() ? status : SecretStatus::failed;
}

SecretStatus FileSecretStore::change(const std::function<SecretStatus(json::array&)>& change) {
    auto status = SecretStatus::failed;
    std::string problem;
    const auto unwritten = file_.update([&](json::object& values) {
        auto& entries = values[kEntries];
        if (entries.is_null())
            entries.emplace_array();
        if (entries.is_array())
            status = change(entries.get_array());
        else
            problem = file_.path().string() + " is no key file";
        return status == SecretStatus::success;
    });
    return answer(status, unwritten.empty() ? problem : unwritten);
}

SecretStatus FileSecretStore::add(const SecretItem& item) {
    if (guard() == Guard::unsafe)
        return SecretStatus::failed;
    std::error_code ignored;
    const auto folder = file_.path().parent_path();
    fs::create_directories(folder.parent_path(), ignored);
    ::mkdir(folder.c_str(), 0700);
    return change([&](json::array& entries) {
        if (std::any_of(entries.begin(), entries.end(), same(item.service, item.account)))
            return SecretStatus::duplicate;
        entries.push_back(
            {{"service", item.service}, {"account", item.account}, {"data", encoded(item.data)}});
        return SecretStatus::success;
    });
}

SecretStatus FileSecretStore::find(const std::string& service, const std::string& account,
                                   std::string& data) {
    const auto found = guard();
    if (found != Guard::safe)
        return found == Guard::absent ? SecretStatus::notFound : SecretStatus::failed;
    json::object values;
    const auto content = file_.read(values);
    if (content == JsonFile::Content::unreadable)
        return answer(SecretStatus::failed,
                      "cannot read " + file_.path().string() + ": " + std::generic_category().message(errno));
    const auto* entries = values.if_contains(kEntries);
    if (content == JsonFile::Content::broken || (entries && !entries->is_array()))
        return answer(SecretStatus::failed, file_.path().string() + " is no key file");
    if (!entries)
        return answer(SecretStatus::notFound, {});
    const auto& array = entries->get_array();
    const auto* const entry = std::find_if(array.begin(), array.end(), same(service, account));
    if (entry == array.end())
        return answer(SecretStatus::notFound, {});
    const auto* const text = entry->get_object().if_contains("data");
    auto kept = text && text->is_string() ? decoded(std::string(text->get_string())) : std::nullopt;
    if (!kept)
        return answer(SecretStatus::failed, file_.path().string() + " has a key that cannot be read");
    data = std::move(*kept);
    return answer(SecretStatus::success, {});
}

/// Without a look at modes, which would set them right.
SecretStatus FileSecretStore::holds(const std::string& service, const std::string& account) {
    json::object values;
    const auto content = file_.read(values);
    if (content == JsonFile::Content::absent)
        return SecretStatus::notFound;
    if (content != JsonFile::Content::sound)
        return SecretStatus::failed;
    const auto* const entries = values.if_contains(kEntries);
    const auto* const array = entries ? entries->if_array() : nullptr;
    return array && std::any_of(array->begin(), array->end(), same(service, account))
               ? SecretStatus::success
               : SecretStatus::notFound;
}

SecretStatus FileSecretStore::remove(const std::string& service, const std::string& account) {
    const auto found = guard();
    if (found != Guard::safe)
        return found == Guard::absent ? SecretStatus::notFound : SecretStatus::failed;
    return change([&](json::array& entries) {
        auto* const kept = std::remove_if(entries.begin(), entries.end(), same(service, account));
        const bool any = kept != entries.end();
        entries.erase(kept, entries.end());
        return any ? SecretStatus::success : SecretStatus::notFound;
    });
}

} // namespace velto
