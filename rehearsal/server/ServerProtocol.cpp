// Which protocol is spoken where.
#include "rehearsal/server/ServerProtocol.h"

#include "rehearsal/server/GeminiProtocol.h"
#include "rehearsal/server/OpenAIProtocol.h"

namespace velto::rehearsal {

std::unique_ptr<ServerProtocol> makeServerProtocol(std::string_view path, ServerProtocol::Send send) {
    if (path == GeminiProtocol::path)
        return std::make_unique<GeminiProtocol>(std::move(send));
    if (path == OpenAIProtocol::path)
        return std::make_unique<OpenAIProtocol>(std::move(send));
    return nullptr;
}

} // namespace velto::rehearsal
