#include "VeltoShared/voice/SecretBlot.h"

#include "VeltoShared/core/TextTrim.h"
#include "VeltoShared/voice/PercentEncoding.h"

#include <boost/algorithm/string/replace.hpp>
#include <boost/json/serialize.hpp>

namespace velto {

SecretBlot::SecretBlot(std::string_view stored) {
    const auto secret = trimBlanksAndNewlines(stored);
    if (secret.empty())
        return;
    const std::string inJSON = boost::json::serialize(boost::json::string_view(secret.data(), secret.size()));
    forms_ = {std::string(secret), percentEncoded(secret), inJSON.substr(1, inJSON.size() - 2)};
}

std::string SecretBlot::blotted(std::string text) const {
    for (const auto& form : forms_)
        boost::algorithm::replace_all(text, form, "(key)");
    return text;
}

} // namespace velto
