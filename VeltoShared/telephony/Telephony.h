// Placing, watching and ending a call through the desktop's phone app and its banners.
#pragma once

#include <boost/asio/awaitable.hpp>

#include <functional>
#include <string>
#include <string_view>

/// No state of its own: what is on the screen is the state. Without accessibility access no call is seen.
namespace velto::Telephony {

namespace asio = boost::asio;

/// Opens the phone app on the number, presses the banner's Call button (100 attempts, 100 ms apart), and
/// waits until a call is active (401 looks, 100 ms apart). Answers whether one is. Await it on the main
/// thread; it lets go of it during each wait, and a wait that is cancelled counts as finished. `log`, which
/// may be empty, gets one finished line an event.
asio::awaitable<bool> dial(std::string number, std::function<void(std::string)> log);

/// Whether the number without the blanks and tabs around it makes a URL behind "tel-phoneapp:": not empty,
/// only the characters of RFC 3986, each "%" with its two hexadecimal digits, at most one "#". `dial` refuses
/// others.
bool isDialable(std::string_view number);

/// Whether the notification centre shows a button described exactly "End". Any thread, one walk.
bool callActive();
/// Whether a call is active and either a running time is shown, by the notification centre or the phone app,
/// or the phone app records. Any thread.
bool callAnswered();
/// Presses "End" until no call is active: up to 30 times, 200 ms apart. Answers whether none is. Blocks the
/// calling thread.
bool hangup();

} // namespace velto::Telephony
