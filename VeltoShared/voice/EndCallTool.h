// The one function that the model is offered: it hangs up.
#pragma once

#include <string_view>

namespace velto::EndCallTool {

inline constexpr std::string_view name = "end_call";
inline constexpr std::string_view description =
    "Hang up the phone call. Call this once the goal is complete and you have said goodbye.";

} // namespace velto::EndCallTool
