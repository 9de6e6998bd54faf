#include "VeltoShared/voice/SecretBlot.h"

#include "VeltoShared/voice/PercentEncoding.h"

#include <boost/json/serialize.hpp>

namespace velto {

SecretBlot::SecretBlot(std::string_view secret) {
    if (secret.empty())
        return;
    const std::string inJSON = boost::json::serialize(boost::json::string_view(secret.data(), secret.size()));
    forms_ = {std::string(secret), percentEncoded(secret), inJSON.substr(1, inJSON.size() - 2)};
}

std::string SecretBlot::blotted(std::string text) const {
    constexpr std::string_view kBlot = "(key)";
    for (const auto& form : forms_)
        for (auto at = text.find(form); at != std::string::npos; at = text.find(form, at + kBlot.size()))
            text.replace(at, form.size(), kBlot);
    return text;
}

} // namespace velto
