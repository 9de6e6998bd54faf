// Reading and driving other applications' user interfaces: buttons, presses, texts, searches.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Stateless, on the installed platform's accessibility and workspace. Any thread; each operation blocks
/// while it talks to the other application, within the bounds of `ElementWalk`. Nothing is reported as an
/// error: without access, without the application, or where a read fails, the answer is empty, none or false.
namespace velto::AX {

/// Elements visited at most in the notification centre or one application, and in a search or count.
inline constexpr std::size_t kBudget = 20'000;
inline constexpr std::size_t kSearchBudget = 60'000;

inline constexpr std::string_view kNotificationCenter = "com.apple.notificationcenterui";
inline constexpr std::string_view kPhoneApp = "com.apple.mobilephone";

struct Button {
    std::string description; ///< never empty
    double x = 0;            ///< position on the screen, 0 when unavailable
    double y = 0;
};

struct ElementInfo {
    pid_t pid = 0;
    std::string bundleID;
    std::string role;
    std::string title;
    std::string description;
    std::string value;
};

/// Whether this process may use accessibility.
bool trusted();
void promptForTrust();

/// The first running application with the notification centre's identifier.
std::optional<pid_t> notificationCenterPID();

/// Every button with a description in the notification centre.
std::vector<Button> buttons();
/// Presses the first button of the notification centre whose description or title is this text, whatever its
/// case, and whose press succeeds; false when there is none.
bool press(std::string_view description);
/// The visible texts of the first running application with this identifier, or of the notification centre.
std::vector<std::string> texts(const std::optional<std::string>& bundleID = std::nullopt);
/// The elements of all running applications, or of those with this identifier, outside menus and menu bars,
/// whose role, title, description and value, joined by blanks, contain the needle, whatever its case.
std::vector<ElementInfo> scanAllApps(std::string_view needle,
                                     const std::optional<std::string>& bundleID = std::nullopt);
/// How many elements of each role the first running application with this identifier has; "?" counts those
/// without a role.
std::map<std::string, int> roleCounts(std::string_view bundleID);

} // namespace velto::AX
